#pragma once

#include <string>

#include "account/account.h"
#include "console/output.h"

namespace tavro::tools {

/// The command that the account lacks on its way to a session; empty when it has one.
std::string missingStep(const Account& account);

/// Sees that a complete configuration has an e-mail address, too. Throws Failure.
void requireEmail(const Account& account);

/// Prints that somebody is logged in to `account`.
void printLoggedIn(const Account& account, const Output& output);

}  // namespace tavro::tools
