#include "log_line.h"

#include <array>
#include <cstdio>

#include "text/text.h"

namespace tavro::service {

std::string readableLine(const Json& request) {
    const auto text = [&](const char* key) {
        return visibleText(request.value(key, std::string()));
    };
    const std::string code = request.at("closed").get<bool>() ? "closed"
                             : text("code").empty()           ? "-"
                                                              : text("code");
    std::array<char, 160> columns;
    std::snprintf(columns.data(), columns.size(), "%-15s %-6.20s HTTP %3d %9zu bytes %5lld ms",
                  text("operation").c_str(), code.c_str(), request.at("status").get<int>(),
                  request.at("bytes").get<std::size_t>(),
                  request.at("milliseconds").get<long long>());
    std::string line = text("time").substr(11, 8) + " " + columns.data();
    for (const auto& [key, shown] : {std::pair("item", "ItemId"), std::pair("file", "file")}) {
        const std::string value = text(key);
        if (!value.empty())
            line += "  " + std::string(shown) + " " + value;
    }
    return request.at("fault").get<bool>() ? line + "  (fault)" : line;
}

std::string jsonLine(const Json& request) {
    Json line = {{"event", "request"}};
    line.update(request);
    return line.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace tavro::service
