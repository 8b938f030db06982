#include "support/reader_account.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "account/account_requests.h"
#include "account/session.h"
#include "bookmap.h"
#include "service.h"
#include "session/account_keys.h"
#include "support/require.h"

namespace fs = std::filesystem;
using namespace tavro::tools;

namespace bench {

namespace {

/// Makes `books` text books in the folder `folder`. @return the folder.
std::string withBooks(const std::string& folder, std::int64_t books) {
    for (std::int64_t book = 1; book <= books; ++book)
        writeFile(folder + "/book " + std::to_string(book) + ".txt", "It is short.\n");
    return folder;
}

/// Serves the books in `folder`.
void serve(const std::string& folder, const ServerProcess::Report& report) {
    tavro::service::Options options;
    options.books = folder;
    ::setenv("TMPDIR", fs::path(folder).parent_path().c_str(), 1);  // as it will be killed
    const tavro::service::Service service(options);
    report(service.port());
    for (;;)
        ::pause();
}

/// Logs the account in, in a process of its own: the library would keep the service's address.
bool logInTo(const DeviceRoot& device) {
    Account account(device.configuration());
    registerDevice(account, false);
    openAccount(account, "password");
    logIn(account, "password");
    return true;
}

/// Writes the book map of all books of the catalogue, whose files are called by their titles.
bool mapAll(const DeviceRoot& device) {
    loadServerSettings();
    const auto session = openSession(Account(device.configuration()), Need::Session);
    require(session->syncServer(), "the catalogue comes");
    BookMap map;
    map.path = device.file(account_files::book_map);
    require(map.LockFile() == 0, "the map opens");
    for (const BookDescription& book : session->getAddedBooks())
        map.bookMap[book.field(BookDescription::Title) + ".txt"] =
            std::stoi(book.field(BookDescription::ItemID));
    return map.saveMapInt() == 0;
}

}  // namespace

ReaderAccount::ReaderAccount(std::int64_t books)
    : bookFolder(withBooks(folder_ / "books", books)),
      service([this](const auto& report) { serve(bookFolder, report); }) {
    device.writeServerSettings(service.port);
    device.writeAccount();
    inChild([this] { return logInTo(device); });
}

void ReaderAccount::removeBooks() const {
    fs::remove_all(device.syncFolder());
    fs::create_directory(device.syncFolder());
    fs::remove(device.file(account_files::book_map));
}

std::string ReaderAccount::syncRequest() const {
    const Account account(device.configuration());
    return "<SyncRequest xmlns=\"http://www.tavro.example/deviceAPI\"><SessionID>" +
           account.value(account_keys::session) + "</SessionID><Token>" +
           readFile(device.file(account_files::token)) +
           "</Token><LastSynDateTime>0</LastSynDateTime></SyncRequest>";
}

void ReaderAccount::placeBooks() const {
    removeBooks();
    fs::copy(bookFolder, device.syncFolder(), fs::copy_options::recursive);
    require(inChild([this] { return mapAll(device); }), "the map is written");
}

}  // namespace bench
