#include "http/control_json.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "text/text.h"

namespace tavro::service {

namespace {

/// Value of a form field that is no secret; clean, for it comes from outside.
std::string fieldOf(const Request& request, const std::string& name) {
    for (const auto& [field, value] : request.fields) {
        if (field == name)
            return visibleText(value.substr(0, 200));
    }
    return "";
}

/// As much of a serial number as tells devices apart for those who know them.
std::string endOf(const std::string& serial) {
    const std::size_t shown = std::min<std::size_t>(4, serial.size() / 2);
    return "\u2026" + visibleText(serial.substr(serial.size() - shown));
}

}  // namespace

std::string timeText(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts = {};
    ::localtime_r(&seconds, &parts);
    std::array<char, 40> text;
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", &parts)};
}

Json toJson(const Request& request) {
    Json json = {{"number", request.number},
                 {"time", timeText(request.time)},
                 {"operation", name(request.operation)},
                 {"device", request.device > 0 ? Json(request.device) : Json()},
                 {"code", visibleText(request.code)},
                 {"message", request.message},
                 {"status", request.status},
                 {"closed", request.status == 0},
                 {"received", request.received},
                 {"bytes", request.bytes},
                 {"milliseconds", request.duration.count()},
                 {"fault", request.faulty}};
    if (descriptionOf(request.operation).isForm())
        json["item"] = fieldOf(request, "ItemId");
    if (request.operation == Operation::UploadContent)
        json["file"] = fieldOf(request, "file");
    return json;
}

Json toJson(const Book& book) {
    return {{"item", std::to_string(book.id)},
            {"title", visibleText(book.title)},
            {"author", visibleText(book.artist)},
            {"isbn", book.isbn13.empty() ? book.isbn : book.isbn13},
            {"type", book.fileType},
            {"path", visibleText(book.path)},
            {"cover",
             book.hasCover && !book.deleted ? Json("/covers/" + std::to_string(book.id)) : Json()},
            {"uploaded", book.content != book.original},
            {"deleted", book.deleted}};
}

Json toJson(const RegisteredDevice& device) {
    Json emails = Json::array();
    for (const std::string& email : device.accounts)
        emails.push_back(visibleText(email));
    return {{"device", device.number},
            {"serial", endOf(device.id)},
            {"type", visibleText(device.type)},
            {"registrations", device.registrations},
            {"accounts", std::move(emails)}};
}

Json toJson(const Account& account) {
    return {{"email", visibleText(account.email)},
            {"firstName", visibleText(account.firstName)},
            {"lastName", visibleText(account.lastName)},
            {"sessions", account.sessions}};
}

}  // namespace tavro::service
