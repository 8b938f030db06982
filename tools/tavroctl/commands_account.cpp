#include "commands.h"
#include "operations.h"
#include "password_prompt.h"

namespace tavroctl {

namespace {

/// Advice on `password` for a service that refused it; the device sends it without XML escaping.
std::string passwordAdvice(const std::string& password) {
    return password.find_first_of("&<") == std::string::npos
               ? ""
               : "a password without & and <, which the device cannot send; ";
}

void requireEmail(const Account& account) {
    if (account.isConfigured() && account.value("Email").empty())
        throw Failure("no e-mail address is configured", "'tavroctl setup --email ADDRESS' first");
}

}  // namespace

void registerCommand(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
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
    const auto session = openSession(account, Need::Device);
    const std::string password = readPassword(output, arguments.passwordFromStandardInput, true);
    if (!session->createUser(password))
        throw serviceFailure(*session->server, "the account was not opened", apiAddress(),
                             passwordAdvice(password) +
                                 "'tavroctl login' if you have an account, 'tavroctl setup' to "
                                 "correct e-mail address and names, 'tavroctl register --renew' if "
                                 "the service does not know the device");
    const std::string email = account.value("Email");
    output.result({{"account", email}},
                  "The account " + displayable(email) + " is open. Next: tavroctl login");
}

void logInCommand(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
    requireEmail(account);
    openSession(account, Need::Device);  // rather than ask for a password in vain
    const std::string password = readPassword(output, arguments.passwordFromStandardInput, false);
    try {
        logIn(account, password);
    } catch (Failure& failure) {
        failure.advice.insert(0, passwordAdvice(password));
        throw;
    }
    const std::string email = account.value("Email");
    output.result({{"loggedIn", true}, {"account", email}},
                  "Logged in as " + displayable(email) + ".");
}

void remind(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
    if (arguments.email.empty())
        requireEmail(account);
    const std::string email = arguments.email.empty() ? account.value("Email") : arguments.email;
    const auto session = openSession(account, Need::Device);
    if (!session->forgetPassword(email))
        throw serviceFailure(*session->server, "no reminder was sent to " + email, apiAddress(),
                             "the address that the account was opened with");
    output.result({{"reminded", email}},
                  "The service sends a password reminder to " + displayable(email) + ".");
}

void shop(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
    const auto session = openSession(account, Need::Device);
    const bool accepted =
        session->getShopInfo(account.value("ConsumerID"), account.value("ConsumerPassword"),
                             account.value("DeviceType"));
    // The library calls an answer without the shop's details a success, an empty one as well.
    if (!accepted || session->getShopUrl().empty())
        throw serviceFailure(
            *session->server, "the shop's details did not come", apiAddress(),
            "checking ConsumerID and ConsumerPassword in " + account.file(Tavro::config_file));
    output.summary({{"name", session->getShopName()},
                    {"url", session->getShopUrl()},
                    {"terms", session->getShopLicenseUrl()}});
}

void status(const Arguments& arguments, const Output& output) {
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
    output.summary({{"configuration", account.folder()},
                    {"configured", configured},
                    {"email", account.value("Email")},
                    {"downloadFolder", account.downloadFolder()},
                    {"service", apiAddress()},
                    {"registered", registered},
                    {"loggedIn", loggedIn},
                    {"books", books},
                    {"downloaded", books - missing},
                    {"pending", pending},
                    {"next", !configured   ? "tavroctl setup"
                             : !registered ? "tavroctl register"
                             : !loggedIn   ? "tavroctl login"
                             : pending > 0 ? "tavroctl replay"
                             : books == 0  ? "tavroctl sync"
                             : missing > 0 ? "tavroctl download --all"
                                           : ""}});
}

}  // namespace tavroctl
