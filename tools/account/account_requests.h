#pragma once

#include <string>

#include "account/account.h"

namespace tavro::tools {

// Functions that ask the service block until it has answered; failures are thrown as Failure.

/// Registers the device and stores its token. With `renew`, registers a registered device anew;
/// the old token stays if that fails. @return false when it was registered already.
bool registerDevice(Account& account, bool renew);

/// Why `text` cannot be sent to the service, into whose XML the device inserts it as it is; empty
/// when it can.
std::string whyUnsendable(const std::string& text);

/// Why `text` cannot be the e-mail address of an account; empty when it can.
std::string whyNoAddress(const std::string& text);

/// Opens an account with the configured e-mail address and names.
void openAccount(const Account& account, const std::string& password);

/// Logs in and stores the session for later commands.
void logIn(Account& account, const std::string& password);

/// Has the service send a password reminder to `email`.
void remindPassword(const Account& account, const std::string& email);

/// The shop as the service describes it.
struct Shop {
    std::string name;
    std::string url;
    std::string terms;  ///< a link or the text itself
};

/// Asks for the shop's details.
Shop askForShop(const Account& account);

}  // namespace tavro::tools
