#include "tavroctl/device_folder.h"

#include <unistd.h>

#include "account/files.h"
#include "platform/device_paths.h"
#include "program/failure.h"

namespace fs = std::filesystem;

namespace tavro::tools {

void requireDevicesFolder(const Account& account) {
    const fs::path own = device_paths::configuration_folder;
    if (fs::path(account.folder()).lexically_normal() != own.lexically_normal())
        throw UsageError("this command works on the device's own configuration folder only, " +
                         own.string() + ": leave --config out");
}

void requireApplication(const Account& account, const char* path) {
    requireDevicesFolder(account);
    if (!isRegularFile(path) || ::access(path, X_OK) != 0)
        throw Failure(std::string("there is no application ") + path,
                      "lay the device root out with scripts/device-root");
}

}  // namespace tavro::tools
