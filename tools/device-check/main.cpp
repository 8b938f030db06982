// The program that checks whether a device is one for libtavro.so.

#include <ftw.h>
#include <getopt.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>

#include "device-check/check.h"
#include "platform/device_paths.h"
#include "posix/system_error.h"
#include "program/run_program.h"

namespace {

using namespace tavro::device_check;

constexpr const char* program = "tavro-device-check";

constexpr const char* help =
    R"(Usage: tavro-device-check [OPTION...]

Checks on a device whether libtavro.so will work there: the libraries, the calls of the platform,
the file system and the fixed paths. Prints a line for each check: what is wrong breaks what it says.
What a check calls runs in a process of its own, so that it may crash or hang. What is written lies in
a folder ".tavro-device-check-" and six characters, which is removed at the end; only a killed program
leaves it.

  --service         also ask the configured service: registration (unless the device has a token),
                    log-in, catalogue, a download. Nothing that the device has stored is changed
  --password-stdin  log in with the line from standard input instead of the stored password
  --event           also send the event of a log-out (SendEventTo)
  --open FILE       also open the application FILE (OpenBook)
  --folder FOLDER   write below FOLDER (default: where the configuration folder lies)
  --verbose         show what the libraries print, on standard error
  --json            print one JSON document
  --help, --version

Examples:
  LD_LIBRARY_PATH=. ./tavro-device-check
  tavro-device-check --folder /mnt/ext1/Tavro        # the file system of the books
  tavro-device-check --service --password-stdin < password.txt
  tavro-device-check --open /ebrmain/bin/tavro_wizard.app

Exit status: 0 nothing is wrong, 1 something is, 2 wrong use.
)";

/// What the program is to do; 1 for an option that is given.
struct Options {
    int help = 0, version = 0, json = 0, verbose = 0, event = 0, service = 0, readPassword = 0;
    std::string folder = {};       ///< where the checks write
    std::string application = {};  ///< to be opened, unless empty
};

/// Reads the arguments. Throws `std::invalid_argument` for a wrong use.
Options readOptions(int count, char** values) {
    Options result;
    const option options[] = {{"service", no_argument, &result.service, 1},
                              {"password-stdin", no_argument, &result.readPassword, 1},
                              {"event", no_argument, &result.event, 1},
                              {"open", required_argument, nullptr, 'o'},
                              {"folder", required_argument, nullptr, 'f'},
                              {"verbose", no_argument, &result.verbose, 1},
                              {"json", no_argument, &result.json, 1},
                              {"help", no_argument, &result.help, 1},
                              {"version", no_argument, &result.version, 1},
                              {nullptr, 0, nullptr, 0}};
    for (int letter = 0; (letter = ::getopt_long(count, values, "", options, nullptr)) != -1;) {
        if (letter == '?')
            throw std::invalid_argument("unknown or incomplete option; try --help");
        if (letter != 0)
            (letter == 'o' ? result.application : result.folder) = optarg;
    }
    if (::optind != count)
        throw std::invalid_argument(std::string(values[::optind]) + " is no option; try --help");
    if (result.readPassword && !result.service)
        throw std::invalid_argument("--password-stdin needs --service");
    return result;
}

volatile sig_atomic_t interrupted = 0;

/// Lets the program end in good order, and a wait for a child at once.
void endOnSignals() {
    struct sigaction action = {};
    action.sa_handler = [](int) { interrupted = 1; };
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

/// A hidden folder of its own that goes with all files in it.
class ScratchFolder {
public:
    /// Makes it in `parent`. Throws `std::system_error`.
    explicit ScratchFolder(const std::string& parent)
        : path(parent + "/.tavro-device-check-XXXXXX") {
        if (::mkdtemp(path.data()) == nullptr)
            posix::throwSystemError("cannot make a folder in", parent);
    }
    ~ScratchFolder() {
        clear();
        ::rmdir(path.c_str());
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// Removes all that is in it.
    void clear() const {
        const auto remove = [](const char* file, const struct stat*, int, FTW* place) {
            return place->level > 0 ? std::remove(file) : 0;
        };
        ::nftw(path.c_str(), remove, 8, FTW_DEPTH | FTW_PHYS);
    }

    std::string path;
};

/// Where the checks write: beside the configuration folder, which may be missing still.
ScratchFolder folderFor(const Options& options) {
    if (!options.folder.empty())
        return ScratchFolder(options.folder);
    try {
        const std::string configuration = device_paths::configurationFolder();
        return ScratchFolder(configuration.substr(0, configuration.rfind('/')));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s; checking the file system of /tmp\n", program, error.what());
        return ScratchFolder("/tmp");
    }
}

/// The first line of standard input.
std::string readLine() {
    char line[1024] = "";
    if (std::fgets(line, sizeof line, stdin) == nullptr)
        throw std::runtime_error("there is no password on standard input");
    const std::string text = line;
    return text.substr(0, text.find('\n'));
}

std::vector<Check> chosenChecks(const Options& options) {
    std::vector<Check> checks;
    for (const auto& group : {libraryChecks(), platformChecks(), fileChecks(),
                              options.service ? serviceChecks() : std::vector<Check>()})
        checks.insert(checks.end(), group.begin(), group.end());
    if (options.event)
        checks.push_back(eventCheck());
    if (!options.application.empty())
        checks.push_back(applicationCheck(options.application));
    return checks;
}

int checkDevice(const Options& options) {
    endOnSignals();
    const ScratchFolder folder = folderFor(options);
    Context context{folder.path, options.readPassword ? readLine() : "", options.verbose != 0};
    int wrong = 0;
    std::string json;
    for (const Check& check : chosenChecks(options)) {
        if (interrupted)
            return tavro::tools::exit_status::failed;
        const Result result = runInChild(check, context);
        folder.clear();
        wrong += result.status == 'w';
        if (options.json)
            json += (json.empty() ? "" : ",\n") + asObject(check, result);
        else
            std::puts(asLine(check, result).c_str());
        std::fflush(stdout);
    }
    if (options.json)
        std::printf("{\"wrong\":%d,\"checks\":[\n%s]}\n", wrong, json.c_str());
    else
        std::printf(wrong == 0 ? "Nothing is wrong.\n" : "Wrong: %d\n", wrong);
    return wrong == 0 ? tavro::tools::exit_status::done : tavro::tools::exit_status::failed;
}

int run(int count, char** values) {
    const Options options = readOptions(count, values);
    if (!options.help && !options.version)
        return checkDevice(options);
    std::fputs(options.help ? help : "tavro-device-check " TAVRO_VERSION "\n", stdout);
    return tavro::tools::exit_status::done;
}

}  // namespace

int main(int count, char** values) {
    return tavro::tools::runProgram<std::invalid_argument>(
        program, [=] { return run(count, values); },
        [](const std::exception& error, int) { tavro::tools::printError(program, error); });
}
