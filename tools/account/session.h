#pragma once

#include <memory>

#include "account/account.h"
#include "tavro.h"

namespace tavro::tools {

/// What an operation needs of the account beforehand.
enum class Need { Device, Session };

/// Opens a session of the library without a request. Throws when the account is not set up, the
/// device not registered, or (for Need::Session) nobody is logged in, saying what to do first.
std::unique_ptr<Tavro> openSession(const Account& account, Need need);

/// Loads the service's address from the device's settings, for all sessions of this process. To be
/// called before a session sends anything. Throws Failure when the settings cannot be read.
void loadServerSettings();

/// Throws Failure unless the account's configuration is complete.
void requireConfiguration(const Account& account);

}  // namespace tavro::tools
