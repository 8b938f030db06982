// Requests through `TavroServer`, which writes no file but a download: whatever the device has
// stored of its account stays as it is, also when this program is killed.

#include <unistd.h>

#include <cstring>

#include "device-check/files.h"
#include "device-check/module_checks.h"
#include "platform/configuration.h"
#include "platform/device_paths.h"
#include "posix/files.h"
#include "server/result_codes.h"
#include "session/account_keys.h"
#include "tavro.h"
#include "transport/partial_file.h"

namespace tavro::device_check {

namespace {

/// The account's value of `key`; empty when it has none.
std::string accountValue(const char* key) {
    return ReadString(platform::openConfiguration(device_paths::accountConfiguration()).get(), key,
                      "");
}

std::string accountFile(const char* name) {
    return std::string(device_paths::configurationFolder()) + "/" + name;
}

/// Keeps `value` for the checks to come.
template <std::size_t Size>
void keep(char (&place)[Size], const std::string& value) {
    expect(value.size() < Size,
           "an answer is too long: " + std::to_string(value.size()) + " bytes");
    std::memcpy(place, value.c_str(), value.size() + 1);
}

/// The service as the device knows it, with what earlier checks have obtained.
class Service : public TavroServer {
public:
    explicit Service(const ServiceState& state)
        : TavroServer(accountValue(account_keys::serial_number)) {
        token = state.token;
        sessionId = state.session;
    }

    /// Says why the last request failed, unless it `succeeded`.
    void expectSuccess(bool succeeded) const {
        const std::string place = baseApiUrl + " on port " + std::to_string(apiPort);
        expect(succeeded || !lastError.empty(), "no readable answer from " + place);
        expect(succeeded, "the service answered " + lastError + " " + lastMessage);
    }
};

}  // namespace

extern "C" void tavro_check_registration(const Context& context, std::string& found) {
    for (const char* key : account_keys::required)
        expect(!accountValue(key).empty(),
               std::string(device_paths::accountConfiguration()) + " lacks " + key);
    const std::string stored = posix::readFile(accountFile(account_files::token));
    keep(context.service->token, stored);
    if (!stored.empty())
        throw Skipped("the device has a token, which another registration might end");
    Service service(*context.service);
    const int outcome = service.RegisterDevice(accountValue(account_keys::consumer_id),
                                               accountValue(account_keys::consumer_password),
                                               accountValue(account_keys::device_type));
    service.expectSuccess(outcome == 0);
    keep(context.service->token, service.token);
    found = "the service gave a token, which is not stored";
}

extern "C" void tavro_check_login(const Context& context, std::string& found) {
    if (*context.service->token == 0)
        throw Skipped("there is no device token");
    std::string password = context.password;
    if (password.empty())
        password =
            ReadSecret(platform::openConfiguration(accountFile(account_files::password)).get(),
                       "password", "");
    if (password.empty()) {
        keep(context.service->session, accountValue(account_keys::session));
        throw Skipped("no password is stored; give one with --password-stdin");
    }
    Service service(*context.service);
    service.expectSuccess(service.loginUser(accountValue(account_keys::email), password) == 0);
    keep(context.service->session, service.sessionId);
    found = "the service gave a session, which is not stored";
}

extern "C" void tavro_check_catalogue(const Context& context, std::string& found) {
    if (*context.service->session == 0)
        throw Skipped("there is no session");
    Service service(*context.service);
    const int outcome = service.syncWithCloud("0");
    service.expectSuccess(outcome == 0 && service.lastError == result_codes::success);
    const std::vector<BookDescription>& books = service.getAddedBooks();
    if (!books.empty())
        keep(context.service->item, books.front().field(BookDescription::ItemID));
    found = std::to_string(books.size()) + " books";
}

extern "C" void tavro_check_download(const Context& context, std::string& found) {
    const std::string item = context.service->item;
    if (item.empty())
        throw Skipped("no book is known");
    Service service(*context.service);
    const std::string name = service.downloadContent(item, context.folder);
    expect(!name.empty(), "nothing came of item " + item + " from " + TavroServer::downloadUrl +
                              " on port " + std::to_string(TavroServer::downloadPort));
    const auto file = openFile(transport::partialFile(context.folder, name), O_RDONLY);
    const off_t size = ::lseek(file.get(), 0, SEEK_END);
    expect(size > 0, "item " + item + " came without content");
    found = "item " + item + ", " + std::to_string(size) + " bytes";
}

}  // namespace tavro::device_check
