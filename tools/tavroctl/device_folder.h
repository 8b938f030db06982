#pragma once

#include "account/account.h"

namespace tavro::tools {

/// Sees that `account` is that of the device's own configuration folder, the only one that the
/// library's fixed paths lead to. Throws UsageError.
void requireDevicesFolder(const Account& account);

/// Sees that the application `path` can be started for the device's own account, as
/// `requireDevicesFolder` does it. Throws UsageError, Failure.
void requireApplication(const Account& account, const char* path);

}  // namespace tavro::tools
