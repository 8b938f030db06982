#include "account/account_requests.h"

#include "account/service_failure.h"
#include "account/session.h"
#include "platform/account_files.h"
#include "program/failure.h"
#include "session/account_keys.h"

namespace tavro::tools {

namespace {

/// Advice on `password` for a service that refused it; the device sends it without XML escaping.
std::string passwordAdvice(const std::string& password) {
    return password.find_first_of("&<") == std::string::npos
               ? ""
               : "take a password without & and <, which the device cannot send; ";
}

}  // namespace

bool registerDevice(Account& account, bool renew) {
    requireConfiguration(account);
    const bool registered = account.isRegistered();
    if (registered && !renew)
        return false;
    loadServerSettings();
    Tavro session;
    const bool opened = session.init(account.folder());
    if (!session.server)  // made once the configuration is read
        throw Failure("cannot read " + account.file(Tavro::config_file),
                      "run the same command again");
    const bool done = opened && (!registered || session.server->RegisterDevice(
                                                    account.value(account_keys::consumer_id),
                                                    account.value(account_keys::consumer_password),
                                                    account.value(account_keys::device_type)) == 0);
    if (!done)
        throw serviceFailure(*session.server, "the registration failed", apiAddress(),
                             "check ConsumerID and ConsumerPassword in " +
                                 account.file(account_files::configuration));
    account.storeToken(session.deviceToken());
    return true;
}

std::string whyUnsendable(const std::string& text) {
    for (const char character : text)
        if (static_cast<unsigned char>(character) < ' ' || character == '\x7F' ||
            character == '&' || character == '<')
            return "control characters, & and < cannot be sent to the service";
    return {};
}

std::string whyNoAddress(const std::string& text) {
    if (std::string reason = whyUnsendable(text); !reason.empty())
        return reason;
    const std::size_t at = text.find('@');
    const bool isOne = at != 0 && at < text.size() - 1 && text.rfind('@') == at &&
                       text.find(' ') == std::string::npos;
    return isOne ? "" : "an e-mail address is as ada@reader.example, without blanks";
}

void openAccount(const Account& account, const std::string& password) {
    const auto session = openSession(account, Need::Device);
    if (!session->createUser(password))
        throw serviceFailure(*session->server, "the account was not opened", apiAddress(),
                             passwordAdvice(password) +
                                 "run 'tavroctl login' if you have an account, 'tavroctl setup' to "
                                 "correct e-mail address and names");
}

void logIn(Account& account, const std::string& password) {
    const auto session = openSession(account, Need::Device);
    if (!session->login(password))
        throw serviceFailure(*session->server, "the login failed", apiAddress(),
                             passwordAdvice(password) +
                                 "give another password, or run 'tavroctl signup' if there is no "
                                 "account yet, 'tavroctl remind' if the password is lost");
    account.storeSession(session->sessionID(), session->vendorToken());
}

void remindPassword(const Account& account, const std::string& email) {
    const auto session = openSession(account, Need::Device);
    if (!session->forgetPassword(email))
        throw serviceFailure(*session->server, "no reminder was sent to " + email, apiAddress(),
                             "give the address that the account was opened with");
}

Shop askForShop(const Account& account) {
    const auto session = openSession(account, Need::Device);
    const bool accepted = session->getShopInfo(account.value(account_keys::consumer_id),
                                               account.value(account_keys::consumer_password),
                                               account.value(account_keys::device_type));
    // The library calls an answer without the shop's details a success, an empty one as well.
    if (!accepted || session->getShopUrl().empty())
        throw serviceFailure(*session->server, "the shop's details did not come", apiAddress(),
                             "check ConsumerID and ConsumerPassword in " +
                                 account.file(account_files::configuration));
    return {session->getShopName(), session->getShopUrl(), session->getShopLicenseUrl()};
}

}  // namespace tavro::tools
