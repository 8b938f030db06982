// The synchronisation application that the device's programs start in the background.

#include <clocale>
#include <cstdio>
#include <exception>
#include <string>

#include "failure.h"
#include "platform/device_paths.h"
#include "quiet_library.h"
#include "sync_round.h"

namespace {

using namespace reader;

constexpr int exit_failed = 1;
constexpr int exit_wrong_use = 2;

constexpr const char* log_file = ".tavro_sync.log";

constexpr const char* help =
    R"(Usage: tavro_sync.app

Synchronises the device's account once: sends changed books, fetches the catalogue, downloads what
is missing with its covers, and removes what the service deleted. It may be ended at any moment;
the next round goes on from there. The device's programs start it in the background, without
arguments; a developer does so with 'tavroctl sync --background'.

  --help     show this text
  --version  show the version

What it did stands in the file .tavro_sync.log of the account's configuration folder.
Exit status: 0 done, or another round is running; 1 something failed; 2 wrong use.
)";

int synchronise(const Account& account, const ActivityLog& log) {
    try {
        return SyncRound(account, log).run() ? 0 : exit_failed;
    } catch (const AlreadyRunning& running) {
        log.note(running.what());
        return 0;
    }
}

int run() {
    const Output output("tavro_sync.app", false);
    const Account account(device_paths::configuration_folder);
    const ActivityLog log(account.file(log_file));
    try {
        const QuietLibrary quiet(output, false);
        return synchronise(account, log);
    } catch (const Failure& failure) {
        log.note(std::string("the round failed: ") + failure.what());
        output.error(failure);
    } catch (const std::exception& error) {
        log.note(std::string("the round failed: ") + error.what());
        output.error(Failure(error.what()));
    }
    return exit_failed;
}

int parseAndRun(int count, char** values) {
    const std::string argument = count > 1 ? values[1] : "";
    if (count == 1)
        return run();
    if (count > 2 || (argument != "--help" && argument != "--version")) {
        std::fprintf(stderr, "tavro_sync.app: it takes no arguments (see --help)\n");
        return exit_wrong_use;
    }
    std::printf("%s", argument == "--help" ? help : "tavro_sync.app " TAVRO_VERSION "\n");
    return 0;
}

}  // namespace

int main(int count, char** values) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    try {
        return parseAndRun(count, values);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tavro_sync.app: %s\n", error.what());
        return exit_failed;
    }
}
