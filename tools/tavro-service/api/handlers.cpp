#include "api/handlers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <system_error>

#include "state/secrets.h"

namespace tavro::service {

namespace {

std::string currentTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts = {};
    ::gmtime_r(&now, &parts);
    std::array<char, 32> text;
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

std::string itemCode(int id) {
    std::array<char, 16> text;
    std::snprintf(text.data(), text.size(), "TAVRO-%08X", static_cast<unsigned>(id));
    return text.data();
}

Element itemElement(const Book& book, const std::string& baseUrl) {
    const std::string id = std::to_string(book.id);
    return {"ItemsResponse",
            "",
            {{"Artist", book.artist},
             {"CategoryId", "1"},
             {"CoverArtImage", book.hasCover ? baseUrl + "/covers/" + id : ""},
             {"Duration", "0"},
             {"FileType", book.fileType},
             {"ISBN", book.isbn},
             {"ISBN13", book.isbn13},
             {"ItemID", id},
             {"TavroID", itemCode(book.id)},
             {"NumberOfFiles", "1"},
             {"Status", book.deleted ? "Deleted" : "Active"},
             {"Title", book.title}}};
}

/// The item that a form names, for a session that is good.
Book requireItem(const Call& call) {
    call.requireSession("SessionId");
    const std::string& item = call.value("ItemId");
    int id = 0;
    const char* const end = item.data() + item.size();
    const auto [stop, error] = std::from_chars(item.data(), end, id);
    if (auto book = call.catalogue.find(error == std::errc() && stop == end ? id : 0))
        return *book;
    throw RequestError(result::unknown_item);
}

/// `name` if a file can be called so without leading anywhere; empty otherwise.
std::string plainFileName(const std::string& name) {
    const bool plain = std::all_of(name.begin(), name.end(), [](char character) {
        return character != '/' && static_cast<unsigned char>(character) >= ' ';
    });
    return plain && name != "." && name != ".." ? name : "";
}

}  // namespace

void Call::requireConsumer() const {
    const Consumer asking(value("ServiceConsumerID"), value("ServiceConsumerPassword"));
    if (consumer && *consumer != asking)
        throw RequestError(result::unknown_consumer);
}

std::string Call::requireDevice() const {
    if (auto device = accounts.deviceOf(value("Token")))
        return *device;
    throw RequestError(result::unknown_token);
}

void Call::requireSession(const char* name) const {
    requireDevice();
    if (!accounts.hasSession(value(name), value("Token")))
        throw RequestError(result::unknown_session);
}

DeviceResponse registerDevice(Call& call) {
    call.requireConsumer();
    const std::string token =
        call.accounts.registerDevice(call.value("DeviceId"), call.value("DeviceType"));
    return DeviceResponse(result::success, {{"Token", token}});
}

DeviceResponse createUser(Call& call) {
    call.requireDevice();
    if (!call.accounts.create(call.value("Email"), call.value("FirstName"), call.value("LastName"),
                              call.value("Password")))
        throw RequestError(result::existing_account);
    return DeviceResponse();
}

DeviceResponse loginUser(Call& call) {
    if (call.requireDevice() != call.value("DeviceID"))
        throw RequestError(result::unknown_device);
    const auto account = call.accounts.authenticate(call.value("EmailID"), call.value("Password"));
    if (!account)
        throw RequestError(result::wrong_password);
    const std::string session = call.accounts.startSession(call.value("Token"), *account);
    return DeviceResponse(result::success, {{"SessionID", session},
                                            {"VendorToken", randomToken()},
                                            {"VendorId", std::to_string(*account)}});
}

DeviceResponse forgetPassword(Call& call) {
    call.requireDevice();
    if (!call.accounts.exists(call.value("EmailID")))
        throw RequestError(result::unknown_account);
    return DeviceResponse(result::reminder_sent);
}

DeviceResponse getShopUrl(Call& call) {
    call.requireConsumer();
    return DeviceResponse(
        result::success,
        {{"ShopURL", call.request.baseUrl + "/shop"},
         {"ShopName", "Zabrin"},
         {"Shopid", "C07D3A95-61E2-4B7A-9F14-8A2E5D0C6B41"},
         {"TermsOfServiceUrl", call.request.baseUrl + "/terms"},
         {"TermsOfServiceText",
          "This is a local stand-in of the service. It promises nothing and forgets what you "
          "delete."}});
}

DeviceResponse synchronise(Call& call) {
    call.requireSession("SessionID");
    call.catalogue.refresh();
    // The whole catalogue, whatever the device has seen before.
    Element added{"AddedItems", ""};
    Element deleted{"DeletedItems", ""};
    for (const Book& book : call.catalogue.books())
        (book.deleted ? deleted : added)
            .children.push_back(itemElement(book, call.request.baseUrl));
    return DeviceResponse(
        result::success,
        {{"CurrentServerTime", currentTime()}, std::move(added), std::move(deleted)});
}

DeviceResponse uploadContent(Call& call) {
    const Book book = requireItem(call);
    posix::TemporaryFile& file = call.request.form.file;
    if (!file)
        throw RequestError(result::missing_value);
    call.catalogue.replaceContent(book.id, file, plainFileName(call.value("file")));
    return DeviceResponse();
}

DeviceResponse downloadContent(Call& call) {
    const Book book = requireItem(call);
    try {
        DeviceResponse response;
        response.content = contentOfFile(book.content);
        response.contentType = "application/octet-stream";
        response.fileName = book.fileName;
        return response;
    } catch (const std::system_error&) {
        throw RequestError(result::unknown_item);  // gone since the folder was last read
    }
}

}  // namespace tavro::service
