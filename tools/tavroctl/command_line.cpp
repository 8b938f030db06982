#include "tavroctl/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <optional>
#include <utility>
#include <vector>

#include "console/quiet_library.h"
#include "platform/device_paths.h"
#include "program/device_root.h"
#include "program/failure.h"
#include "program/run_program.h"
#include "tavroctl/absolute_path.h"

namespace tavro::tools {

namespace {

/// Why the command line of `app` is wrong.
std::string reasonOf(const CLI::ParseError& error, const CLI::App& app) {
    const std::vector<std::string> rest = app.remaining();
    const bool unknown = app.get_subcommands().empty() && !rest.empty() && rest[0][0] != '-';
    return unknown ? "there is no command '" + rest[0] + "'" : error.what();
}

}  // namespace

CommandLine::CommandLine()
    : app_(std::make_unique<CLI::App>(
          "Works with the Tavro cloud book service as a reader's applications do", "tavroctl")) {
    app_->require_subcommand(1);
    app_->fallthrough();
    app_->set_version_flag("--version", "tavroctl " TAVRO_VERSION);
    if (!device_root::is_fixed)
        app_->add_option("--device", device_,
                         "Folder of the device (default: TAVRO_DEVICE_ROOT, or the build's)");
    app_->add_flag("--json", json_, "Results as JSON, errors as a JSON line");
    app_->add_flag("--trace", trace_, "Show the exchange with the service");
    app_->footer(
        "Passwords come from the terminal or, with --password-stdin, from standard input.\n"
        "Exit status: 0 done, 1 failed, 2 wrong use. A first run:\n"
        "  tavroctl setup --service http://127.0.0.1:8080 --email ada@reader.example\n"
        "  tavroctl register; tavroctl signup; tavroctl login\n"
        "  tavroctl sync; tavroctl books; tavroctl download --all\n"
        "As the library browser sees a book (FILE: a name in the download folder, or a path):\n"
        "  tavroctl status FILE; tavroctl info FILE; tavroctl cover FILE --ascii\n"
        "Another device, with an account of its own:\n"
        "  tavroctl --device FOLDER setup --email bob@reader.example");
    addCommands(*this);
    addHelp();
}

CommandLine::~CommandLine() = default;

CLI::App& CommandLine::add(const std::string& name, const std::string& description,
                           const std::string& example, Command command, Streams streams) {
    CLI::App& added = *app_->add_subcommand(name, description);
    added.footer("Example:\n  tavroctl " + example);
    added.callback([this, command = std::move(command), streams] {
        command_ = command;
        streams_ = streams;
    });
    return added;
}

void CommandLine::addHelp() {
    CLI::App& help = *app_->add_subcommand("help", "Show how a command is used");
    const auto name = std::make_shared<std::string>();
    help.add_option("COMMAND", *name, "The command");
    help.footer("Example:\n  tavroctl help sync");
    help.callback([this, name] {
        const auto isNamed = [&](const CLI::App* command) { return command->get_name() == *name; };
        const std::vector<CLI::App*> named = app_->get_subcommands(isNamed);
        if (named.empty() && !name->empty())
            throw UsageError("there is no command '" + *name + "'");
        const CLI::App* const command = named.empty() ? app_.get() : named[0];
        const std::string words = named.empty() ? "tavroctl" : "tavroctl " + *name;
        help_ = app_->get_formatter()->make_help(command, words, CLI::AppFormatMode::Normal);
    });
}

int CommandLine::run(int count, char** values) {
    try {
        parse(count, values);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)  // help and version are such, too
            return app_->exit(error);
        throw UsageError(reasonOf(error, *app_));
    }
    if (!help_.empty()) {
        std::cout << help_ << std::flush;
        return exit_status::done;
    }
    chooseDevice();
    const Output output("tavroctl", json_);
    std::optional<QuietLibrary> quiet;
    if (streams_ == Streams::KeptFromLibrary)
        quiet.emplace(output, trace_);
    Account account(device_paths::configurationFolder());
    command_(account, output);
    return exit_status::done;
}

void CommandLine::parse(int count, char** values) {
    // The parser sets nothing before all is right, but errors have to know.
    json_ = std::find(values, values + count, std::string("--json")) != values + count;
    std::vector<std::string> words(values + 1, values + count);
    isAlone_ = words.empty();
    std::reverse(words.begin(), words.end());  // the parser takes them from the end
    app_->parse(std::move(words));
}

void CommandLine::chooseDevice() {
    if (!device_)
        return requireDeviceRoot();
    chooseDeviceRoot(device_->empty() ? "" : absolutePath(*device_), "--device");
}

void CommandLine::tell(const std::exception& error, int status) const {
    const Output output("tavroctl", json_);
    if (status != exit_status::wrong_usage)
        return output.error(error);
    if (isAlone_)
        return output.prompt(std::string("tavroctl: ") + error.what() + "\n\n" + app_->help());
    const auto chosen = app_->get_subcommands();
    const std::string name = chosen.empty() ? "" : chosen[0]->get_name() + " ";
    output.error(Failure(error.what(), "see 'tavroctl " + name + "--help'"));
}

}  // namespace tavro::tools
