// The program that checks whether a device is one for libtavro.so.

#include <signal.h>
#include <sys/mman.h>

#include <cstdio>
#include <stdexcept>

#include "device-check/child_process.h"
#include "device-check/command_line.h"
#include "device-check/report.h"
#include "device-check/scratch_folder.h"
#include "platform/device_paths.h"
#include "posix/system_error.h"
#include "program/run_program.h"

namespace {

using namespace tavro::device_check;

constexpr const char* program = "tavro-device-check";

volatile sig_atomic_t interrupted = 0;

/// Lets the program end in good order, and a wait for a child at once.
void endOnSignals() {
    struct sigaction action = {};
    action.sa_handler = [](int) { interrupted = 1; };
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

std::vector<Check> chosenChecks(const Options& options) {
    std::vector<Check> checks;
    for (const auto& group :
         {libraryChecks(), platformChecks(), settingsChecks(), imageChecks(), fileSystemChecks(),
          folderChecks(), options.service ? serviceChecks() : std::vector<Check>()})
        checks.insert(checks.end(), group.begin(), group.end());
    if (options.event)
        checks.push_back(eventCheck());
    if (!options.application.empty())
        checks.push_back(applicationCheck());
    return checks;
}

/// Memory that this process and its children share.
ServiceState* sharedState() {
    void* const memory = ::mmap(nullptr, sizeof(ServiceState), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        posix::throwSystemError("cannot share", "memory");
    return static_cast<ServiceState*>(memory);
}

/// The first line of standard input.
std::string readLine() {
    char line[1024] = "";
    if (std::fgets(line, sizeof line, stdin) == nullptr)
        throw std::runtime_error("there is no password on standard input");
    const std::string text = line;
    return text.substr(0, text.find('\n'));
}

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

int checkDevice(const Options& options) {
    endOnSignals();
    const ScratchFolder folder = folderFor(options);
    const Context context{folder.path(), options.readPassword ? readLine() : "",
                          options.application, sharedState()};
    Report report(options.json);
    for (const Check& check : chosenChecks(options)) {
        if (interrupted)
            return tavro::tools::exit_status::failed;
        const int seconds = options.seconds == 0 ? check.seconds : options.seconds;
        report.add(check, runInChild(check, context, seconds, options.verbose));
        folder.clear();
    }
    report.finish();
    return report.isGood() ? tavro::tools::exit_status::done : tavro::tools::exit_status::failed;
}

int run(int count, char** values) {
    const Options options = readCommandLine(count, values);
    if (options.help || options.version) {
        std::fputs(options.help ? help : "tavro-device-check " TAVRO_VERSION "\n", stdout);
        return tavro::tools::exit_status::done;
    }
    return checkDevice(options);
}

}  // namespace

int main(int count, char** values) {
    return tavro::tools::runProgram<std::invalid_argument>(
        program, [=] { return run(count, values); },
        [](const std::exception& error, int) { tavro::tools::printError(program, error); });
}
