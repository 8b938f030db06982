#include "tavro_client.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/configuration.h"
#include "platform/device_paths.h"
#include "platform/log.h"
#include "posix/file_status.h"
#include "session/account_keys.h"

namespace {

/// Notes a call of the function `signature` in the system log; `format` takes the process ID.
void logCall(int line, const char* signature, const char* format) {
    fl_print_log2(platform::log_trace, __FILE__, line, signature, format, g_process_pid);
}

/// Becomes `application`, or ends this process with status 127.
[[noreturn]] void become(const char* application) {
    ::execl(application, application, static_cast<char*>(nullptr));
    fl_print_log2(platform::log_error, __FILE__, __LINE__, "int TavroClient::StartSync()",
                  "[pid:%d]TavroClient::StartSync: exec() failed, errno=%i\n", g_process_pid,
                  errno);
    std::exit(127);
}

}  // namespace

TavroClient::TavroClient() = default;

std::string TavroClient::GetProfile() {
    return device_paths::configurationFolder();
}

bool TavroClient::IsLoggedIn() const {
    logCall(__LINE__, "bool TavroClient::IsLoggedIn() const", "[pid:%d]Tavro IsLoggedIn called");
    const std::optional<posix::FileStatus> status = posix::statusOf(device_paths::loginMarker());
    return status && status->size > 0;
}

std::string TavroClient::GetSyncFolder() {
    logCall(__LINE__, "std::string TavroClient::GetSyncFolder()",
            "[pid:%d]Tavro GetSyncFolder called");
    const auto config = platform::openConfiguration(device_paths::accountConfiguration());
    return ReadString(config.get(), account_keys::download_folder, "");
}

int TavroClient::StartSync() {
    logCall(__LINE__, "int TavroClient::StartSync()", "[pid:%d]Tavro StartSync called");
    const char* const application = device_paths::syncApplication();
    if (::fork() == 0)
        become(application);
    return 0;
}

int TavroClient::StartLoginWizard() {
    logCall(__LINE__, "int TavroClient::StartLoginWizard()",
            "[pid:%d]Tavro StartLoginWizard called");
    return OpenBook(device_paths::wizardApplication(), device_paths::wizard_argument, 0);
}
