#include "account/account_requests.h"
#include "account/books.h"
#include "account/catalogue.h"
#include "account/journal_backup.h"
#include "account/session.h"
#include "console/password_prompt.h"
#include "session/account_keys.h"
#include "tavroctl/commands.h"

namespace tavro::tools {

namespace {

void requireEmail(const Account& account) {
    if (account.isConfigured() && account.value(account_keys::email).empty())
        throw Failure("no e-mail address is configured",
                      "run 'tavroctl setup --email ADDRESS' first");
}

}  // namespace

void registerCommand(const Arguments& arguments, const Output& output) {
    Account account(arguments.folder);
    const bool changed = registerDevice(account, arguments.renew);
    output.result(
        {{"registered", true}, {"changed", changed}},
        changed
            ? "The device is registered. Next: tavroctl signup, or tavroctl login with an account"
            : "The device is registered already (--renew does it again).");
}

void signUp(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
    requireEmail(account);
    openSession(account, Need::Device);  // rather than ask for a password in vain
    openAccount(account, readPassword(output, arguments.passwordFromStandardInput, true));
    const std::string email = account.value(account_keys::email);
    output.result({{"account", email}},
                  "The account " + displayable(email) + " is open. Next: tavroctl login");
}

void logInCommand(const Arguments& arguments, const Output& output) {
    Account account(arguments.folder);
    requireEmail(account);
    openSession(account, Need::Device);  // rather than ask for a password in vain
    logIn(account, readPassword(output, arguments.passwordFromStandardInput, false));
    const std::string email = account.value(account_keys::email);
    output.result({{"loggedIn", true}, {"account", email}},
                  "Logged in as " + displayable(email) + ".");
}

void remind(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
    if (arguments.email.empty())
        requireEmail(account);
    const std::string email =
        arguments.email.empty() ? account.value(account_keys::email) : arguments.email;
    remindPassword(account, email);
    output.result({{"reminded", email}},
                  "The service sends a password reminder to " + displayable(email) + ".");
}

void shop(const Arguments& arguments, const Output& output) {
    const Shop shop = askForShop(Account(arguments.folder));
    output.summary({{"name", shop.name}, {"url", shop.url}, {"terms", shop.terms}});
}

std::string missingStep(const Account& account) {
    if (!account.isConfigured())
        return "tavroctl setup";
    if (!account.isRegistered())
        return "tavroctl register";
    return account.isLoggedIn() ? "" : "tavroctl login";
}

std::string serviceUrl() {
    const std::size_t scheme = TavroServer::baseApiUrl.find("://");
    return (scheme == std::string::npos ? "http" : TavroServer::baseApiUrl.substr(0, scheme)) +
           "://" + apiAddress();
}

void status(const Arguments& arguments, const Output& output) {
    if (!arguments.file.empty())
        return fileStatus(arguments, output);
    const Account account(arguments.folder);
    const TavroServer reader("");  // loads the service's address
    const bool configured = account.isConfigured();
    const bool registered = configured && account.isRegistered();
    const bool loggedIn = registered && account.isLoggedIn();
    const auto present = presentFiles(account);
    std::size_t books = 0;
    std::size_t missing = 0;
    if (registered) {
        const auto session = openSession(account, Need::Device);
        for (const auto& book : session->getAddedBooks()) {
            ++books;
            missing += present.count(itemNumber(book)) == 0;
        }
    }
    const std::size_t pending = pendingChanges(account).size();
    const std::string step = missingStep(account);
    output.summary({{"configuration", account.folder()},
                    {"configured", configured},
                    {"email", account.value(account_keys::email)},
                    {"downloadFolder", account.downloadFolder()},
                    {"service", serviceUrl()},
                    {"registered", registered},
                    {"loggedIn", loggedIn},
                    {"books", books},
                    {"downloaded", books - missing},
                    {"pending", pending},
                    {"next", !step.empty() ? step
                             : pending > 0 ? "tavroctl replay"
                             : books == 0  ? "tavroctl sync"
                             : missing > 0 ? "tavroctl download --all"
                                           : ""}});
}

}  // namespace tavro::tools
