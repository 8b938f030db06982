// The synchronisation application that the device's programs start in the background.

#include <exception>
#include <string>

#include "account/account_lock.h"
#include "account/own_files.h"
#include "console/application.h"
#include "console/quiet_library.h"
#include "platform/device_paths.h"
#include "posix/inherited_descriptors.h"
#include "tavro-sync/sync_round.h"

namespace {

using namespace tavro::tools;

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

/// Runs a round. @return the exit status.
int synchronise(const Output& output) {
    const QuietLibrary quiet(output, false);
    const Account account(device_paths::configurationFolder());
    const ActivityLog log(account.file(own_files::sync_log));
    try {
        return SyncRound(account, log).run() ? 0 : 1;
    } catch (const AlreadyRunning& running) {
        log.note(running.what());
        return 0;
    } catch (const std::exception& error) {
        log.note(std::string("the round failed: ") + error.what());
        throw;
    }
}

}  // namespace

int main(int count, char** values) {
    posix::openStandardStreams();
    // The browser's lock on the download list among them, for which this process would wait.
    posix::closeInheritedDescriptors();
    return runApplication({"tavro_sync.app", help, nullptr, synchronise}, count, values);
}
