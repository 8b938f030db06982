#include "operations.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>

#include "atomic_file.h"
#include "book_map_backup.h"
#include "failure.h"

namespace fs = std::filesystem;

namespace reader {

namespace {

/// Result code of a request that the service carried out.
constexpr const char* success_code = "1003";

void requireConfiguration(const Account& account) {
    if (!account.isConfigured())
        throw Failure("there is no complete account configuration in " + account.folder(),
                      "run 'tavroctl setup' first");
}

/// Advice on `password` for a service that refused it; the device sends it without XML escaping.
std::string passwordAdvice(const std::string& password) {
    return password.find_first_of("&<") == std::string::npos
               ? ""
               : "take a password without & and <, which the device cannot send; ";
}

/// The file names of the book map `map`.
std::set<std::string> namesOf(const std::map<std::string, int>& map) {
    std::set<std::string> names;
    for (const auto& entry : map)
        names.insert(entry.first);
    return names;
}

/// Content of the file `path`; nothing when there is no such file.
std::optional<std::vector<char>> contentOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        return std::nullopt;
    return std::vector<char>(std::istreambuf_iterator<char>(stream), {});
}

}  // namespace

std::unique_ptr<Tavro> openSession(const Account& account, Need need) {
    requireConfiguration(account);
    if (!account.isRegistered())
        throw Failure("the device is not registered", "run 'tavroctl register' first");
    if (need == Need::Session && !account.isLoggedIn())
        throw Failure("nobody is logged in", "run 'tavroctl login' first");
    auto session = std::make_unique<Tavro>();
    if (!session->init(account.folder()))
        throw Failure("the device token in " + account.folder() + " cannot be read");
    return session;
}

bool registerDevice(const Account& account, bool renew) {
    requireConfiguration(account);
    const bool registered = account.isRegistered();
    if (registered && !renew)
        return false;
    Tavro session;
    const bool done =
        session.init(account.folder()) &&
        (!registered || session.server->RegisterDevice(account.value("ConsumerID"),
                                                       account.value("ConsumerPassword"),
                                                       account.value("DeviceType")) == 0);
    if (!done)
        throw serviceFailure(
            *session.server, "the registration failed", apiAddress(),
            "check ConsumerID and ConsumerPassword in " + account.file(Tavro::config_file));
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

void openAccount(const Account& account, const std::string& password) {
    const auto session = openSession(account, Need::Device);
    if (!session->createUser(password))
        throw serviceFailure(*session->server, "the account was not opened", apiAddress(),
                             passwordAdvice(password) +
                                 "run 'tavroctl login' if you have an account, 'tavroctl setup' to "
                                 "correct e-mail address and names, 'tavroctl register --renew' if "
                                 "the service does not know the device");
}

void logIn(const Account& account, const std::string& password) {
    const auto session = openSession(account, Need::Device);
    if (!session->login(password))
        throw serviceFailure(
            *session->server, "the login failed", apiAddress(),
            passwordAdvice(password) +
                "give another password, or run 'tavroctl signup' if there is no "
                "account yet, 'tavroctl remind' if the password is lost, 'tavroctl "
                "register --renew' if the service does not know the device");
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
    const bool accepted =
        session->getShopInfo(account.value("ConsumerID"), account.value("ConsumerPassword"),
                             account.value("DeviceType"));
    // The library calls an answer without the shop's details a success, an empty one as well.
    if (!accepted || session->getShopUrl().empty())
        throw serviceFailure(
            *session->server, "the shop's details did not come", apiAddress(),
            "check ConsumerID and ConsumerPassword in " + account.file(Tavro::config_file));
    return {session->getShopName(), session->getShopUrl(), session->getShopLicenseUrl()};
}

void synchronise(Tavro& session, const Account& account) {
    const std::string file = account.file(Tavro::tavro_books);
    const auto former = contentOf(file);
    const bool answered = session.syncServer();
    // The library calls every readable answer a success, and leaves judging the code to us; nor
    // does it look whether the file was written.
    const bool accepted = answered && session.lastError() == success_code;
    if (accepted && contentOf(file) == session.server->getLastXMLAnswer())
        return;
    if (answered && former)
        writeAtomically(file, {former->begin(), former->end()});
    if (accepted)
        throwCannotWrite(file);
    throw serviceFailure(
        *session.server, "the catalogue was not fetched", apiAddress(),
        "run 'tavroctl login' again, or 'tavroctl register --renew' if the service does not "
        "know the device");
}

std::map<std::string, int> mappedFiles(const Account& account) {
    if (!fs::exists(account.file(Tavro::list_file)))
        return {};  // asking the book map would create the file
    BookMap map;
    map.path = account.file(Tavro::list_file);
    return map.GetBookMap();
}

bool isPresent(const Account& account, const std::string& name) {
    return fs::is_regular_file(account.bookFile(name));
}

std::map<int, std::vector<std::string>> presentFiles(const Account& account) {
    const std::string folder = account.downloadFolder().string() + "/";
    std::map<int, std::vector<std::string>> present;
    for (const auto& [name, item] : mappedFiles(account))
        if (fs::is_regular_file(folder + name))
            present[item].push_back(name);
    return present;
}

int itemNumber(const BookDescription& book) {
    const long number = std::strtol(book.field(BookDescription::ItemID).c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

std::string downloadBook(Tavro& session, const Account& account, const BookDescription& book) {
    const fs::path folder = account.downloadFolder();
    std::string name = session.downloadBook(book);
    if (name.empty())
        throw Failure(
            "no whole file came from " + downloadAddress(),
            "run 'tavroctl sync' to see whether service and session are alive, add --trace "
            "to see the exchange");
    if (!fs::is_regular_file(folder.string() + "/" + name))
        throw Failure("the download could not be given its name " + name,
                      "check the permissions of " + folder.string());
    secureBookMap(account);
    return name;
}

SyncJournal::Record replaceBook(Tavro& session, const Account& account, const std::string& oldName,
                                const std::string& newName, bool upload) {
    if (!session.updateACSM(oldName, newName, upload))
        throw Failure("the book map does not know " + oldName,
                      "name one of the files of 'tavroctl map'");
    const auto changes = pendingChanges(account);
    if (changes.empty() || changes.back().oldName != oldName || changes.back().newName != newName)
        throw Failure("the change did not reach the journal " + account.file(Tavro::journal_file),
                      "free space or check the permissions, then run the same command again");
    return changes.back();
}

ReplayResult replayChanges(Tavro& session, const Account& account) {
    const auto before = pendingChanges(account);
    if (before.empty())
        return {};
    std::set<std::string> names = namesOf(mappedFiles(account));
    const JournalBackup backup(account);
    session.syncDownloadFolder();
    ReplayResult result;
    result.kept = pendingChanges(account);

    // The library replays the newest change first, and each one moves a name of the book map.
    auto unexplained = result.kept;
    for (auto change = before.rbegin(); change != before.rend(); ++change) {
        if (take(unexplained, *change))
            continue;
        const bool wasKnown = names.erase(change->oldName) > 0;
        (wasKnown ? result.uploaded : result.dropped).push_back(*change);
        if (wasKnown)
            names.insert(change->newName);
    }
    // Neither journal nor map tell whether they were written, and a full disk shows only here.
    backup.requireSpace();
    if (names != namesOf(mappedFiles(account)))
        throwCannotWrite(account.folder());
    backup.discard();
    secureBookMap(account);
    return result;
}

}  // namespace reader
