#include "api/device_api.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <system_error>

#include "state/secrets.h"

namespace tavro::service {

namespace {

constexpr const char* shop_name = "Zabrin";
constexpr const char* shop_id = "C07D3A95-61E2-4B7A-9F14-8A2E5D0C6B41";
constexpr const char* terms_of_service =
    "This is a local stand-in of the service. It promises nothing and forgets what you delete.";

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

void addItem(AnswerDocument& document, pugi::xml_node list, const Book& book,
             const std::string& baseUrl) {
    const std::string id = std::to_string(book.id);
    const std::string cover = book.hasCover ? baseUrl + "/covers/" + id : "";
    const std::pair<const char*, std::string> fields[] = {
        {"Artist", book.artist},
        {"CategoryId", "1"},
        {"CoverArtImage", cover},
        {"Duration", "0"},
        {"FileType", book.fileType},
        {"ISBN", book.isbn},
        {"ISBN13", book.isbn13},
        {"ItemID", id},
        {"TavroID", itemCode(book.id)},
        {"NumberOfFiles", "1"},
        {"Status", book.deleted ? "Deleted" : "Active"},
        {"Title", book.title}};
    pugi::xml_node item = list.append_child("ItemsResponse");
    for (const auto& [name, text] : fields)
        document.add(item, name, text);
}

/// `name` if a file can be called so without leading anywhere; empty otherwise.
std::string plainFileName(const std::string& name) {
    bool plain = name != "." && name != "..";
    for (const char character : name)
        plain = plain && character != '/' && static_cast<unsigned char>(character) >= ' ';
    return plain ? name : "";
}

}  // namespace

DeviceApi::DeviceApi(Accounts& accounts, Catalogue& catalogue, ApiOptions options)
    : accounts_(accounts), catalogue_(catalogue), options_(std::move(options)) {}

Answer DeviceApi::answer(const Message& message, const std::string& code) {
    static constexpr std::array<Handler, all_operations.size()> handlers = {
        &DeviceApi::registerDevice, &DeviceApi::createUser,      &DeviceApi::loginUser,
        &DeviceApi::forgetPassword, &DeviceApi::shopInformation, &DeviceApi::synchronise,
        &DeviceApi::upload,         &DeviceApi::download};
    return (this->*handlers[static_cast<std::size_t>(message.operation)])(message, code);
}

Answer DeviceApi::resultAnswer(Operation operation, const Result& result,
                               const std::string& code) const {
    return AnswerDocument(operation, result, code, options_.style).finish();
}

Answer DeviceApi::registerDevice(const Message& message, const std::string& code) {
    const Values values = readRequest(message.operation, message.body);
    requireConsumer(values);
    AnswerDocument document = success(message.operation, code);
    document.add("Token", accounts_.registerDevice(values.at("DeviceId"), values.at("DeviceType")));
    return document.finish();
}

Answer DeviceApi::createUser(const Message& message, const std::string& code) {
    const Values values = readRequest(message.operation, message.body);
    requireDevice(values.at("Token"));
    if (!accounts_.create(values.at("Email"), values.at("FirstName"), values.at("LastName"),
                          values.at("Password")))
        throw Refusal{result::existing_account};
    return success(message.operation, code).finish();
}

Answer DeviceApi::loginUser(const Message& message, const std::string& code) {
    const Values values = readRequest(message.operation, message.body);
    if (requireDevice(values.at("Token")) != values.at("DeviceID"))
        throw Refusal{result::unknown_device};
    const auto account = accounts_.authenticate(values.at("EmailID"), values.at("Password"));
    if (!account)
        throw Refusal{result::wrong_password};
    const std::string session = accounts_.startSession(values.at("Token"), *account);
    AnswerDocument document = success(message.operation, code);
    document.add("SessionID", session);
    document.add("VendorToken", randomName());
    document.add("VendorId", std::to_string(*account));
    return document.finish();
}

Answer DeviceApi::forgetPassword(const Message& message, const std::string& code) {
    const Values values = readRequest(message.operation, message.body);
    requireDevice(values.at("Token"));
    if (!accounts_.exists(values.at("EmailID")))
        throw Refusal{result::unknown_account};
    return resultAnswer(message.operation, result::reminder_sent, code);
}

Answer DeviceApi::shopInformation(const Message& message, const std::string& code) {
    requireConsumer(readRequest(message.operation, message.body));
    AnswerDocument document = success(message.operation, code);
    document.add("ShopURL", message.baseUrl + "/shop");
    document.add("ShopName", shop_name);
    document.add("Shopid", shop_id);
    document.add("TermsOfServiceUrl", message.baseUrl + "/terms");
    document.add("TermsOfServiceText", terms_of_service);
    return document.finish();
}

Answer DeviceApi::synchronise(const Message& message, const std::string& code) {
    // 1. Who asks.
    const Values values = readRequest(message.operation, message.body);
    requireSession(values.at("SessionID"), values.at("Token"));

    // 2. The whole catalogue, whatever the device has seen before.
    catalogue_.refresh();
    AnswerDocument document = success(message.operation, code);
    document.add("CurrentServerTime", currentTime());
    const pugi::xml_node added = document.addList("AddedItems");
    const pugi::xml_node deleted = document.addList("DeletedItems");
    for (const Book& book : catalogue_.books())
        addItem(document, book.deleted ? deleted : added, book, message.baseUrl);
    return document.finish();
}

Answer DeviceApi::upload(const Message& message, const std::string& code) {
    const Form& form = message.form;
    const Book book = requireItem(form);
    if (!form.file)
        throw Refusal{result::missing_value};
    catalogue_.replaceContent(book.id, form.file.path(), plainFileName(form.value("file")));
    return success(message.operation, code).finish();
}

Answer DeviceApi::download(const Message& message, const std::string&) {
    const Book book = requireItem(message.form);
    try {
        return {result::success.code, 200, "application/octet-stream", book.fileName,
                contentOfFile(book.content)};
    } catch (const std::system_error&) {
        throw Refusal{result::unknown_item};  // gone since the folder was last read
    }
}

AnswerDocument DeviceApi::success(Operation operation, const std::string& code) const {
    return {operation, result::success, code, options_.style};
}

void DeviceApi::requireConsumer(const Values& values) const {
    const std::pair consumer(values.at("ServiceConsumerID"), values.at("ServiceConsumerPassword"));
    if (options_.consumer && *options_.consumer != consumer)
        throw Refusal{result::unknown_consumer};
}

std::string DeviceApi::requireDevice(const std::string& token) {
    if (auto device = accounts_.deviceOf(token))
        return *device;
    throw Refusal{result::unknown_token};
}

void DeviceApi::requireSession(const std::string& session, const std::string& token) {
    requireDevice(token);
    if (!accounts_.hasSession(session, token))
        throw Refusal{result::unknown_session};
}

Book DeviceApi::requireItem(const Form& form) {
    const std::string item = form.value("ItemId");
    for (const char* const field : {"Token", "SessionId", "ItemId"}) {
        if (form.value(field).empty())
            throw Refusal{result::missing_value};
    }
    requireSession(form.value("SessionId"), form.value("Token"));
    int id = 0;
    const char* const end = item.data() + item.size();
    const auto [stop, error] = std::from_chars(item.data(), end, id);
    if (auto book = catalogue_.find(error == std::errc() && stop == end ? id : 0))
        return *book;
    throw Refusal{result::unknown_item};
}

}  // namespace tavro::service
