#include "tavro-wizard/wizard.h"

#include <unistd.h>

#include <iostream>
#include <sstream>

#include "account/service_failure.h"
#include "console/password_prompt.h"
#include "program/failure.h"
#include "session/account_keys.h"
#include "tavro_client.h"

namespace tavro::tools {

namespace {

/// The person has left: the end of input came instead of an answer.
class Left : public std::exception {};

constexpr const char* menu =
    "\n"
    "  1  Log in with my account\n"
    "  2  Open a new account\n"
    "  3  I have forgotten my password\n"
    "  q  Quit\n\n";

/// What to do about `failure`, in the words of this dialogue.
const char* adviceFor(const Failure& failure) {
    if (failure.code.empty())
        return "Please choose again.";
    if (isUnknownDevice(failure.code))
        return "The shop does not know the device: quit, and run 'tavroctl register --renew'.";
    return "Check what you have entered. 1 is for an account that is there, 2 for a new one, 3 for "
           "a lost\npassword.";
}

}  // namespace

bool Wizard::run() {
    // What a device lacks that is not set up is told first, by the registration.
    if (account_.isConfigured() && ::isatty(STDIN_FILENO) != 1)
        throw UsageError("standard input is no terminal to hold a dialogue at");
    registerDevice(account_, false);
    showShop();
    bool loggedIn = false;
    try {
        loggedIn = askUntilLoggedIn();
        if (loggedIn)
            offerSynchronisation();
    } catch (const Left&) {
        say("");
    }
    if (!loggedIn)
        say("You have left without logging in.");
    return loggedIn;
}

void Wizard::showShop() {
    shop_ = askForShop(account_);
    say("Welcome to " + shop_.name + ", " + shop_.url);
    std::istringstream terms(shop_.terms.empty() ? "" : "Terms: " + shop_.terms);
    for (std::string line; std::getline(terms, line);)
        say(line);
}

bool Wizard::askUntilLoggedIn() {
    for (;;) {
        output_.prompt(menu);
        const std::string choice = ask("Your choice");
        if (choice == "q" || choice == "Q")
            return false;
        try {
            if (serve(choice))
                return true;
        } catch (const Failure& failure) {
            say(std::string("That did not work: ") + failure.what());
            output_.prompt(std::string(adviceFor(failure)) + "\n");
        } catch (const UsageError& usageError) {  // of the password prompt
            say(std::string("That did not work: ") + usageError.what());
        }
    }
}

bool Wizard::serve(const std::string& choice) {
    if (choice == "1")
        return useAccount();
    if (choice == "2")
        return openNewAccount();
    if (choice == "3")
        sendReminder();
    else
        say("Please enter 1, 2, 3 or q.");
    return false;
}

bool Wizard::useAccount() {
    storeEmail(askSendable("E-mail address", account_keys::email));
    logInWith(askPassword(false));
    return true;
}

bool Wizard::openNewAccount() {
    const std::string agreed = ask(shop_.terms.empty() ? "Open an account with this shop? y or n"
                                                       : "Do you agree to the terms above? y or n",
                                   "n");
    if (agreed != "y" && agreed != "Y") {
        say("No account was opened.");
        return false;
    }
    storeEmail(askSendable("E-mail address", account_keys::email));
    const Settings names{
        {account_keys::first_name, askSendable("First name", account_keys::first_name)},
        {account_keys::last_name, askSendable("Last name", account_keys::last_name)}};
    account_.store(names);
    const std::string password = askPassword(true);
    openAccount(account_, password);
    say("The account " + account_.value(account_keys::email) +
        " is open.");  // whatever becomes of the login
    logInWith(password);
    return true;
}

void Wizard::sendReminder() {
    const std::string email = askSendable("E-mail address of the account", account_keys::email);
    remindPassword(account_, email);
    say("The shop sends a reminder to " + email + ".");
}

void Wizard::offerSynchronisation() {
    const std::string wanted = ask("Fetch your books now? y or n", "y");
    if (wanted != "y" && wanted != "Y")
        return;
    TavroClient().StartSync();
    say("Your books are being fetched in the background.");
}

/// Logs in with the configured e-mail address, and says so.
void Wizard::logInWith(const std::string& password) {
    logIn(account_, password);
    say("You are logged in as " + account_.value(account_keys::email) + ".");
}

void Wizard::say(const std::string& text) const {
    output_.prompt(displayable(text) + "\n");
}

/// Asks `question` until a line comes. @return the line, `proposal` for an empty one.
std::string Wizard::ask(const std::string& question, const std::string& proposal) const {
    output_.prompt(displayable(question) +
                   (proposal.empty() ? "" : " [" + displayable(proposal) + "]") + ": ");
    std::string line;
    if (!std::getline(std::cin, line))
        throw Left();
    return line.empty() ? proposal : line;
}

/// Asks for a value of the account that the service takes, proposing the one stored as `key`.
std::string Wizard::askSendable(const std::string& question, const std::string& key) const {
    for (;;) {
        std::string value = ask(question, account_.value(key));
        const std::string reason = value.empty()                ? "an answer is needed"
                                   : key == account_keys::email ? whyNoAddress(value)
                                                                : whyUnsendable(value);
        if (reason.empty())
            return value;
        say("Please enter it again: " + reason + ".");
    }
}

/// Asks for a password that the service can be sent, with `twice` two times.
std::string Wizard::askPassword(bool twice) const {
    std::string password = readPassword(output_, false, twice);
    const std::string reason = whyUnsendable(password);
    if (!reason.empty())
        throw Failure("the password cannot be used: " + reason);
    return password;
}

/// Makes `email` the account's address. A session of another account ends with that.
void Wizard::storeEmail(const std::string& email) {
    if (email == account_.value(account_keys::email))
        return;
    account_.store({{account_keys::email, email}});
    account_.forgetSession();
}

}  // namespace tavro::tools
