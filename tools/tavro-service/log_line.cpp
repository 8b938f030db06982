#include "log_line.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "text/text.h"

namespace tavro::service {

namespace {

std::string now(const char* format) {
    const std::time_t time = std::time(nullptr);
    std::tm parts = {};
    ::localtime_r(&time, &parts);
    std::array<char, 40> text;
    return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

/// Value of a form field that is no secret; clean, for it comes from outside.
std::string fieldOf(const Request& request, const std::string& name) {
    for (const auto& [field, value] : request.fields) {
        if (field == name)
            return visibleText(value.substr(0, 200));
    }
    return "";
}

}  // namespace

std::string readableLine(const Request& request) {
    const std::string code = request.status == 0    ? "closed"
                             : request.code.empty() ? "-"
                                                    : visibleText(request.code);
    std::array<char, 160> columns;
    std::snprintf(columns.data(), columns.size(), "%-15s %-6.20s HTTP %3d %9zu bytes %5lld ms",
                  name(request.operation), code.c_str(), request.status, request.bytes,
                  static_cast<long long>(request.duration.count()));
    std::string line = now("%H:%M:%S ") + columns.data();
    for (const char* const field : {"ItemId", "file"}) {
        const std::string value = fieldOf(request, field);
        if (!value.empty())
            line += "  " + std::string(field) + " " + value;
    }
    return request.faulty ? line + "  (fault)" : line;
}

std::string jsonLine(const Request& request) {
    nlohmann::ordered_json json = {{"event", "request"},
                                   {"time", now("%Y-%m-%dT%H:%M:%S%z")},
                                   {"operation", name(request.operation)},
                                   {"code", visibleText(request.code)},
                                   {"status", request.status},
                                   {"closed", request.status == 0},
                                   {"bytes", request.bytes},
                                   {"milliseconds", request.duration.count()},
                                   {"fault", request.faulty}};
    if (descriptionOf(request.operation).isForm())
        json["item"] = fieldOf(request, "ItemId");
    if (request.operation == Operation::UploadContent)
        json["file"] = fieldOf(request, "file");
    return json.dump();
}

}  // namespace tavro::service
