#include "text/hex.h"

#include <charconv>

namespace tavro::service {

std::string hexEncode(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += digits[value >> 4];
        text += digits[value & 15];
    }
    return text;
}

std::optional<std::string> hexDecode(std::string_view digits) {
    if (digits.size() % 2 != 0)
        return std::nullopt;
    std::string bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t place = 0; place < digits.size(); place += 2) {
        const char* const begin = digits.data() + place;
        unsigned char value = 0;
        const auto [stop, error] = std::from_chars(begin, begin + 2, value, 16);
        if (error != std::errc() || stop != begin + 2)
            return std::nullopt;
        bytes += static_cast<char>(value);
    }
    return bytes;
}

}  // namespace tavro::service
