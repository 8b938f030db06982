#pragma once

#include <string>

#include "account/account.h"
#include "account/account_requests.h"
#include "console/output.h"

namespace tavro::tools {

/// The dialogue at a terminal in which somebody logs in, with an account that is there or with a
/// new one:
///
///     register the device, if that has not been done
///         |
///     show the shop
///         |
///     .-> ask: account, new account, forgotten password, or quit
///     |       |
///     '-- whatever the service refuses is told, and the question comes again
///         |
///     offer a first synchronisation
///
/// Blocks the calling thread for as long as the person takes.
class Wizard {
public:
    /// A dialogue for `account` through standard input and `output`; both must outlive it.
    Wizard(Account& account, const Output& output) : account_(account), output_(output) {}

    /// Holds the dialogue. @return whether somebody was logged in by it. Throws UsageError without
    /// a terminal, Failure when the device is not set up or the service does not answer.
    bool run();

private:
    bool askUntilLoggedIn();
    /// Does what the person chose. @return whether that logged somebody in.
    bool serve(const std::string& choice);
    bool useAccount();
    bool openNewAccount();
    void sendReminder();
    void offerSynchronisation();

    void showShop();
    void say(const std::string& text) const;
    std::string ask(const std::string& question, const std::string& proposal = {}) const;
    std::string askSendable(const std::string& question, const std::string& key) const;
    std::string askPassword(bool twice) const;
    void logInWith(const std::string& password);
    void storeEmail(const std::string& email);

    Account& account_;
    const Output& output_;
    Shop shop_;
};

}  // namespace tavro::tools
