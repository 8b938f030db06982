#include <lectern.h>
#include <unistd.h>

#include <cstdlib>

#include "device-check/shared_library.h"
#include "platform/device_paths.h"
#include "posix/system_error.h"
#include "session/account_keys.h"

namespace tavro::device_check {

namespace {

bool exists(const std::string& path) {
    return ::access(path.c_str(), F_OK) == 0;
}

/// Expects that this process's user may use the file `path` in the way `mode`.
std::string mayUse(const std::string& path, int mode) {
    if (::access(path.c_str(), mode) != 0)
        posix::throwSystemError("cannot use", path);
    return path;
}

std::string checkConfigurationFolder(const Context&) {
    const std::string folder = device_paths::configurationFolder();
    if (exists(folder))
        return mayUse(folder, R_OK | W_OK | X_OK);
    return mayUse(folder.substr(0, folder.rfind('/')), W_OK | X_OK) + ", where it is to be made";
}

std::string checkSyncFolder(const Context&) {
    if (!exists(device_paths::accountConfiguration()))
        throw Skipped("no account is set up");
    LecternConfig* const config =
        lectern<decltype(OpenConfig)>("OpenConfig")(device_paths::accountConfiguration(), nullptr);
    const std::string folder =
        lectern<decltype(ReadString)>("ReadString")(config, account_keys::download_folder, "");
    expect(!folder.empty(), std::string(account_keys::download_folder) + " is not set in " +
                                device_paths::accountConfiguration());
    return mayUse(folder, R_OK | W_OK | X_OK);
}

std::string checkServerSettings(const Context&) {
    if (!exists(device_paths::serverSettings()))
        return "no file, the built-in ones count";
    return mayUse(device_paths::serverSettings(), R_OK);
}

std::string checkShell(const Context&) {
    for (const char* program : {"rm", "killall"})
        expect(std::system((std::string("command -v ") + program).c_str()) == 0,
               std::string("a shell finds no ") + program);
    return "finds rm and killall";
}

}  // namespace

std::vector<Check> folderChecks() {
    const auto starts = [](const char* program) {
        return [program](const Context&) { return mayUse(program, X_OK); };
    };
    return {
        {"configuration folder", "no account can be set up", "make it, writable for the programs",
         checkConfigurationFolder},
        {"sync folder", "no book is downloaded", "make it, or set another one", checkSyncFolder},
        {"synchronisation application", "books come and go in the foreground only",
         "install tavro_sync.app there", starts(device_paths::syncApplication())},
        {"login wizard", "nobody can log in from the browser", "install tavro_wizard.app there",
         starts(device_paths::wizardApplication())},
        {"server settings", "the built-in service is asked", "let everybody read the file",
         checkServerSettings},
        {"shell", "a log-out leaves the account's files", "put both programs into the path",
         checkShell}};
}

}  // namespace tavro::device_check
