// The checks that need C++ of another library. The requests go through `TavroServer`, which writes
// no file but a download: whatever the device has stored of its account stays as it is, also when
// this program is killed.

#include <core_utils.h>

#include <cstddef>
#include <sstream>

#include "bookmap.h"
#include "device-check/shared_library.h"
#include "platform/configuration.h"
#include "platform/device_paths.h"
#include "posix/file_status.h"
#include "posix/files.h"
#include "program/counted.h"
#include "server/result_codes.h"
#include "session/account_keys.h"
#include "syncjournal.h"
#include "tavro.h"
#include "tavro_client.h"
#include "tavro_entry_points.h"
#include "transport/partial_file.h"

// The classes have private members among the public ones; GCC and Clang lay them out all the same.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace tavro::device_check {

namespace {

/// Where the device's other programs expect members. Only a 32-bit machine has these numbers.
void checkOffsets() {
    const struct {
        const char* member;
        std::size_t actual, expected;
    } places[] = {{"tavro_book_info::title", offsetof(tavro_book_info, title), 16},
                  {"tavro_book_info::author", offsetof(tavro_book_info, author), 20},
                  {"tavro_book_info::category_id", offsetof(tavro_book_info, category_id), 32},
                  {"tavro_book_info::isbn", offsetof(tavro_book_info, isbn), 88},
                  {"Tavro::server", offsetof(Tavro, server), 216},
                  {"TavroServer::shopName", offsetof(TavroServer, shopName), 300},
                  {"BookMap::path", offsetof(BookMap, path), 52},
                  {"SyncJournal::Record::flag", offsetof(SyncJournal::Record, flag), 48}};
    for (const auto& place : places)
        expect(place.actual == place.expected, std::string(place.member) + " lies at " +
                                                   std::to_string(place.actual) + ", not " +
                                                   std::to_string(place.expected));
}

/// Whether members read as libtavro has set them.
void checkObjects(const Context& context) {
    expect(Tavro().server == nullptr, "a new Tavro has a server");
    expect(TavroServer("a device").deviceId == "a device", "TavroServer::deviceId lies elsewhere");
    XMLParser parser;
    parser.init("utf-8");
    const std::string answer = "<Answer><Error>1003</Error></Answer>";
    parser.parse(answer.data(), static_cast<unsigned>(answer.size()));
    expect(parser.answers["Error"] == "1003", "XMLParser::answers lies elsewhere");
    BookMap map;
    map.path = context.folder + "/map";
    map.Add("a book", 7);
    expect(map.fd_ == -1 && map.GetIdMap()[7] == "a book", "BookMap's members lie elsewhere");
    SyncJournal journal(context.folder + "/journal");
    journal.push({"old", "new", true});
    journal.reload();
    SyncJournal::Record record;
    expect(journal.pop(record) && record.newName == "new" && record.flag,
           "SyncJournal::Record's members lie elsewhere");
}

std::string checkLayout(Context& context) {
    constexpr bool has_offsets = sizeof(void*) == 4;
    if (has_offsets)
        checkOffsets();
    checkObjects(context);
    expect(TavroClient().GetProfile() == device_paths::configurationFolder(),
           "libtavro.so was built for another device root: " + TavroClient().GetProfile());
    return has_offsets ? "members lie where the device's programs expect them"
                       : "the library and its headers agree; the device's offsets are not for here";
}

std::string checkStringList(Context&) {
    using folium::utilities::SerializationUtils;
    const std::string list("\2\0\0\0\3\0\0\0one\3\0\0\0two", 18);
    std::vector<std::string> texts = {"replaced"};
    std::istringstream whole(list), cut(list.substr(0, list.size() - 1));
    expect(SerializationUtils::DeserializeStringVec(whole, texts), "refuses a list of two texts");
    expect(texts == std::vector<std::string>{"one", "two"}, "reads other texts than the list's");
    expect(!SerializationUtils::DeserializeStringVec(cut, texts), "takes a list that is cut");
    expect(texts.empty(), "leaves texts of a list that is cut");
    return "reads a list, refuses a cut one";
}

/// The account's value of `key`; empty when it has none.
std::string accountValue(const char* key) {
    return ReadString(platform::openConfiguration(device_paths::accountConfiguration()).get(), key,
                      "");
}

std::string accountFile(const char* name) {
    return std::string(device_paths::configurationFolder()) + "/" + name;
}

/// The service as the device knows it, with what earlier checks have obtained.
class Service : public TavroServer {
public:
    explicit Service(const Context& context)
        : TavroServer(accountValue(account_keys::serial_number)) {
        token = context.token;
        sessionId = context.session;
    }

    /// Says why the last request failed, unless it `succeeded`.
    void expectSuccess(bool succeeded) const {
        const std::string place = baseApiUrl + " on port " + std::to_string(apiPort);
        expect(succeeded || !lastError.empty(), "no readable answer from " + place);
        expect(succeeded, "the service answered " + lastError + " " + lastMessage);
    }
};

std::string checkRegistration(Context& context) {
    for (const char* key : account_keys::required)
        expect(!accountValue(key).empty(),
               std::string(device_paths::accountConfiguration()) + " lacks " + key);
    context.token = posix::readFile(accountFile(account_files::token));
    if (!context.token.empty())
        throw Skipped("the device has a token, which another registration might end");
    Service service(context);
    const int outcome = service.RegisterDevice(accountValue(account_keys::consumer_id),
                                               accountValue(account_keys::consumer_password),
                                               accountValue(account_keys::device_type));
    service.expectSuccess(outcome == 0);
    context.token = service.token;
    return "the service gave a token, which is not stored";
}

std::string checkLogin(Context& context) {
    if (context.token.empty())
        throw Skipped("there is no device token");
    std::string password = context.password;
    if (password.empty())
        password =
            ReadSecret(platform::openConfiguration(accountFile(account_files::password)).get(),
                       "password", "");
    if (password.empty()) {
        context.session = accountValue(account_keys::session);
        throw Skipped("no password is stored; give one with --password-stdin");
    }
    Service service(context);
    service.expectSuccess(service.loginUser(accountValue(account_keys::email), password) == 0);
    context.session = service.sessionId;
    return "the service gave a session, which is not stored";
}

std::string checkCatalogue(Context& context) {
    if (context.session.empty())
        throw Skipped("there is no session");
    Service service(context);
    const int outcome = service.syncWithCloud("0");
    service.expectSuccess(outcome == 0 && service.lastError == result_codes::success);
    const std::vector<BookDescription>& books = service.getAddedBooks();
    if (!books.empty())
        context.item = books.front().field(BookDescription::ItemID);
    return tools::counted(books.size(), "book");
}

std::string checkDownload(Context& context) {
    const std::string& item = context.item;
    if (item.empty())
        throw Skipped("no book is known");
    const std::string name = Service(context).downloadContent(item, context.folder);
    expect(!name.empty(), "nothing came of item " + item + " from " + TavroServer::downloadUrl +
                              " on port " + std::to_string(TavroServer::downloadPort));
    const auto status = posix::statusOf(transport::partialFile(context.folder, name).c_str());
    expect(status && status->size > 0, "item " + item + " came without content");
    return "item " + item + ", " + std::to_string(status->size) + " bytes";
}

}  // namespace

const ModuleChecks tavro_device_checks = {
    {"layout", checkLayout},     {"DeserializeStringVec", checkStringList},
    {"log-in", checkLogin},      {"registration", checkRegistration},
    {"download", checkDownload}, {"catalogue", checkCatalogue}};

}  // namespace tavro::device_check
