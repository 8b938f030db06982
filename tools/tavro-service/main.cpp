#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "control_client.h"
#include "line_writer.h"
#include "log_line.h"
#include "posix/inherited_descriptors.h"
#include "program/counted.h"
#include "program/run_program.h"
#include "scan_line.h"
#include "service.h"
#include "text/text.h"

namespace {

using namespace tavro::service;

using tavro::tools::printError;
namespace exit_status = tavro::tools::exit_status;

constexpr const char* examples =
    "Examples:\n"
    "  tavro-service --books ~/Books\n"
    "  tavro-service --books ~/Books --state ~/tavro.sqlite --port 0 --json\n"
    "  tavro-service --fault LoginUser:code=2008,times=1\n"
    "  tavro-service fault DownloadContent cut=1000 times=2\n"
    "  tavro-service fault UploadContent body-file=answer.xml\n"
    "  tavro-service fault --clear\n"
    "  tavro-service requests --operation UploadContent\n\n";

constexpr const char* default_service = "http://127.0.0.1:1510";

struct ServeArguments {
    Options options;
    std::string consumer;
    std::vector<std::string> faults;
    std::string faultFile;
    std::vector<NamedFault> parsedFaults;
    bool json = false;
    bool quiet = false;
};

struct FaultArguments {
    std::string service = default_service;
    std::string operation;
    std::vector<std::string> settings;
    std::string file;
    bool clear = false;
};

struct RequestsArguments {
    std::string service = default_service;
    std::string operation;
    bool json = false;
    bool clear = false;
};

/// Thrown when a signal ends the service before it has begun.
struct Stopped {};

/// The line that tells how many lines of the log nobody took.
std::string droppedLine(std::size_t count, bool json) {
    if (json)
        return nlohmann::ordered_json({{"event", "dropped"}, {"lines", count}}).dump();
    return std::to_string(count) + " lines were dropped, for nobody read them";
}

std::string announcement(const Service& service, bool json) {
    const std::size_t books = service.books().size();
    if (json)
        return nlohmann::ordered_json({{"event", "listening"},
                                       {"url", service.url()},
                                       {"port", service.port()},
                                       {"books", books}})
            .dump();
    return "Tavro service on " + service.url() + " with " + tavro::tools::counted(books, "book") +
           ". Stop it with Ctrl-C.";
}

/// Keeps the signals that end the service from all threads, for one to wait for them.
sigset_t blockStopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

/// Throws `Stopped` if one of `signals`, which are blocked, has come.
void endWhenStopped(const sigset_t& signals) {
    const timespec now = {};
    if (::sigtimedwait(&signals, nullptr, &now) > 0)
        throw Stopped();
}

int serve(ServeArguments& arguments) {
    const sigset_t signals = blockStopSignals();
    ::umask(S_IRWXG | S_IRWXO);
    const bool json = arguments.json;
    LineWriter output(STDOUT_FILENO,
                      [json](std::size_t count) { return droppedLine(count, json); });
    LineWriter errors(STDERR_FILENO, [](std::size_t count) { return droppedLine(count, false); });
    ScanLine scan;
    Options& options = arguments.options;
    options.report = [&](const std::string& text) {
        scan.remove();
        errors.write("tavro-service: " + text);
    };
    options.progress = [&](std::size_t done, std::size_t all) {
        scan.show(done, all);
        endWhenStopped(signals);
    };
    if (!arguments.quiet)
        options.log = [&, json](const Request& request) {
            output.write(json ? jsonLine(toJson(request)) : readableLine(toJson(request)));
        };
    Service service(options);
    for (const auto& [operation, fault] : arguments.parsedFaults)
        service.inject(operation, fault);
    output.write(announcement(service, json));
    int received = 0;
    sigwait(&signals, &received);
    return exit_status::done;
}

int runFaultCommand(const FaultArguments& arguments) {
    const ControlClient client(arguments.service);
    std::vector<NamedFault> faults;
    if (!arguments.file.empty())
        faults = readFaults(arguments.file);
    if (!arguments.operation.empty())
        faults.push_back(parseFault(arguments.operation, arguments.settings));
    std::string status;
    for (const NamedFault& fault : faults)
        status = client.post("/control/faults", faultToJson(fault));
    if (arguments.clear)
        status = client.remove("/control/faults");
    std::cout << (status.empty() ? client.get("/control/status") : status);
    return exit_status::done;
}

int runRequestsCommand(const RequestsArguments& arguments) {
    const ControlClient client(arguments.service);
    if (arguments.clear) {
        std::cout << client.remove("/control/requests");
        return exit_status::done;
    }
    const std::string& operation = arguments.operation;
    const std::string filter =
        operation.empty() ? "" : std::string("?operation=") + name(operationNamed(operation));
    for (const Json& request : Json::parse(client.get("/control/requests" + filter)))
        std::cout << (arguments.json ? jsonLine(request) : readableLine(request)) << "\n";
    return exit_status::done;
}

void addServeOptions(CLI::App& app, ServeArguments& arguments) {
    Options& options = arguments.options;
    options.port = 1510;
    app.add_option("--books", options.books, "Serve the EPUB, FB2, PDF and text files below FOLDER")
        ->option_text("FOLDER");
    app.add_option("--address", options.address, "Listen on this address")->capture_default_str();
    app.add_option("--port", options.port, "Listen on this port; 0 picks a free one")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    app.add_option("--host", options.hosts,
                   "Answer also to this name of the machine; may be repeated")
        ->option_text("NAME")
        ->expected(1)
        ->take_all();
    app.add_option("--state", options.database,
                   "Keep devices, accounts, sessions and uploads in FILE (default: in memory)")
        ->option_text("FILE");
    app.add_flag("--entity-references", options.entityReferences,
                 "Escape texts with entity references, not with CDATA");
    app.add_option("--max-body", options.maximumBody,
                   "Refuse request bodies larger than SIZE, as 16MB (default: 256MB)")
        ->option_text("SIZE")
        ->transform(CLI::AsSizeValue(false));
    app.add_option("--consumer", arguments.consumer,
                   "Accept only this consumer (default: any identifier and password)")
        ->option_text("ID:PASSWORD");
    app.add_option("--fault", arguments.faults, "Misbehave from the start; see the keys below")
        ->option_text("OPERATION:KEY=VALUE,...")
        ->expected(1)
        ->take_all();
    app.add_option("--faults", arguments.faultFile,
                   "Misbehave from the start as FILE says, with such a fault on each line")
        ->option_text("FILE");
    app.add_flag("--json", arguments.json, "Print JSON lines");
    app.add_flag("--quiet", arguments.quiet, "Print no line for each request");
}

CLI::App* addFaultCommand(CLI::App& app, FaultArguments& arguments) {
    CLI::App* const command =
        app.add_subcommand("fault", "Make a running service misbehave; alone: show what is set");
    command->add_option("--service", arguments.service, "Address of the running service")
        ->capture_default_str();
    CLI::Option* const clear = command->add_flag("--clear", arguments.clear, "Drop all faults");
    command
        ->add_option("--file", arguments.file,
                     "Add the faults of FILE: on each line OPERATION:KEY=VALUE,... or JSON")
        ->option_text("FILE")
        ->excludes(clear);
    command->add_option("operation", arguments.operation, "Operation that is to misbehave")
        ->excludes(clear);
    command->add_option("settings", arguments.settings, "What is to happen, as key=value");
    command->footer(faultHelp());
    return command;
}

CLI::App* addRequestsCommand(CLI::App& app, RequestsArguments& arguments) {
    CLI::App* const command =
        app.add_subcommand("requests", "Show what a running service was asked, the oldest first");
    command->add_option("--service", arguments.service, "Address of the running service")
        ->capture_default_str();
    CLI::Option* const operation =
        command->add_option("--operation", arguments.operation, "Only requests of this operation");
    operation->option_text("NAME");
    command->add_flag("--json", arguments.json, "Print JSON lines");
    command->add_flag("--clear", arguments.clear, "Forget all requests, and show none")
        ->excludes(operation);
    command->footer("Operations: " + operationNames());
    return command;
}

/// Reads what the parser of the command line cannot. Throws `CLI::ValidationError`.
void parseTexts(ServeArguments& arguments) {
    try {
        for (const std::string& text : arguments.faults)
            arguments.parsedFaults.push_back(parseFault(text));
        if (!arguments.faultFile.empty()) {
            const auto more = readFaults(arguments.faultFile);
            arguments.parsedFaults.insert(arguments.parsedFaults.end(), more.begin(), more.end());
        }
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("a fault", error.what());
    }
    const std::size_t colon = arguments.consumer.find(':');
    if (arguments.consumer.empty())
        return;
    if (colon == std::string::npos)
        throw CLI::ValidationError("--consumer", "ID:PASSWORD is wanted");
    arguments.options.consumer.emplace(arguments.consumer.substr(0, colon),
                                       arguments.consumer.substr(colon + 1));
}

/// Reads the command line and does what it says. @return the exit code.
int run(int argc, char** argv) {
    CLI::App app("Local Tavro service: the device API and the book pages on this machine",
                 "tavro-service");
    ServeArguments serveArguments;
    FaultArguments faultArguments;
    RequestsArguments requestsArguments;
    addServeOptions(app, serveArguments);
    const CLI::App* const faultCommand = addFaultCommand(app, faultArguments);
    const CLI::App* const requestsCommand = addRequestsCommand(app, requestsArguments);
    app.set_version_flag("--version", "tavro-service " TAVRO_VERSION);
    app.require_subcommand(0, 1);
    app.footer(examples + faultHelp());
    try {
        app.parse(argc, argv);
        parseTexts(serveArguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exit_status::done : exit_status::wrong_usage;
    }
    if (faultCommand->parsed())
        return runFaultCommand(faultArguments);
    if (requestsCommand->parsed())
        return runRequestsCommand(requestsArguments);
    try {
        return serve(serveArguments);
    } catch (const Stopped&) {
        return exit_status::done;
    }
}

}  // namespace

int main(int argc, char** argv) {
    posix::openStandardStreams();
    return tavro::tools::runProgram<std::invalid_argument>(
        "tavro-service", [&] { return run(argc, argv); },
        [](const std::exception& error, int) {
            printError("tavro-service", std::runtime_error(visibleText(error.what())));
        });
}
