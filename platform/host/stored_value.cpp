#include "stored_value.h"

#include "configuration_file.h"
#include "secret.h"

namespace {

constexpr std::string_view text_mark = "@text:";
constexpr std::string_view secret_mark = "@secret:";
constexpr std::string_view digits = "0123456789abcdef";

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

std::string withMark(std::string_view mark, std::string_view bytes) {
    std::string result(mark);
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        result += digits[number >> 4];
        result += digits[number & 15];
    }
    return result;
}

/// The bytes behind `mark`, or nothing when `stored` is not made by `withMark`.
std::optional<std::string> withoutMark(std::string_view mark, std::string_view stored) {
    if (!startsWith(stored, mark) || (stored.size() - mark.size()) % 2 != 0)
        return std::nullopt;
    std::string bytes;
    for (std::size_t i = mark.size(); i < stored.size(); i += 2) {
        const std::size_t high = digits.find(stored[i]);
        const std::size_t low = digits.find(stored[i + 1]);
        if (high == std::string_view::npos || low == std::string_view::npos)
            return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
    }
    return bytes;
}

}  // namespace

std::string storedText(std::string_view text) {
    const bool plain = ConfigurationFile::isValue(text) && !startsWith(text, text_mark) &&
                       !startsWith(text, secret_mark);
    return plain ? std::string(text) : withMark(text_mark, text);
}

std::optional<std::string> textOf(std::string_view stored) {
    if (startsWith(stored, secret_mark))
        return std::nullopt;
    const std::optional<std::string> bytes = withoutMark(text_mark, stored);
    return bytes ? *bytes : std::string(stored);
}

std::string storedSecret(std::string_view secret) {
    return withMark(secret_mark, conceal(secret));
}

std::optional<std::string> secretOf(std::string_view stored) {
    const std::optional<std::string> bytes = withoutMark(secret_mark, stored);
    return bytes ? reveal(*bytes) : std::nullopt;
}
