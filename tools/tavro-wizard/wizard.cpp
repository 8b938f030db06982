#include "wizard.h"

#include <unistd.h>

#include <iostream>

#include "failure.h"
#include "password_prompt.h"
#include "tavro_client.h"

namespace reader {

namespace {

/// The person has left: the end of input came instead of an answer.
class Left : public std::exception {};

constexpr const char* menu =
    "\n"
    "  1  Log in with my account\n"
    "  2  Open a new account\n"
    "  3  I have forgotten my password\n"
    "  q  Quit\n\n";

/// What to do about a refusal, in the words of this dialogue.
constexpr const char* advice = "Check what you have entered, and choose again.";

}  // namespace

bool Wizard::run() {
    if (::isatty(STDIN_FILENO) != 1)
        throw WrongUse("standard input is no terminal to hold a dialogue at");
    registerDevice(account_, false);
    showShop();
    try {
        if (!askUntilLoggedIn())
            return false;
        offerSynchronisation();
    } catch (const Left&) {
        say("");
    }
    return account_.isLoggedIn();
}

void Wizard::showShop() {
    shop_ = askForShop(account_);
    say("Welcome to " + shop_.name + ", " + shop_.url);
    if (!shop_.terms.empty())
        say("Terms: " + shop_.terms);
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
            say(std::string("That did not work: ") + failure.what() + ".");
            say(advice);
        } catch (const WrongUse& wrongUse) {  // of the password prompt
            say(std::string("That did not work: ") + wrongUse.what() + ".");
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
    storeEmail(askSendable("E-mail address", "Email"));
    logIn(account_, readPassword(output_, false, false));
    say("You are logged in as " + account_.value("Email") + ".");
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
    storeEmail(askSendable("E-mail address", "Email"));
    const Settings names{{"FirstName", askSendable("First name", "FirstName")},
                         {"LastName", askSendable("Last name", "LastName")}};
    account_.store(names);
    const std::string password = readPassword(output_, false, true);
    openAccount(account_, password);
    logIn(account_, password);
    say("The account " + account_.value("Email") + " is open, and you are logged in.");
    return true;
}

void Wizard::sendReminder() {
    const std::string email = askSendable("E-mail address of the account", "Email");
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
        const std::string value = ask(question, account_.value(key));
        const std::string reason = value.empty() ? "an answer is needed" : whyUnsendable(value);
        if (reason.empty())
            return value;
        say("Please enter it again: " + reason + ".");
    }
}

/// Makes `email` the account's address. A session of another account ends with that.
void Wizard::storeEmail(const std::string& email) const {
    if (email == account_.value("Email"))
        return;
    account_.store({{"Email", email}});
    account_.forgetSession();
}

}  // namespace reader
