#include "text/text.h"

#include <charconv>
#include <cstddef>
#include <cstdint>

namespace tavro::service {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD

struct Character {
    std::uint32_t code;
    std::size_t length;
    bool valid;
};

/// The character with which `text` begins; a broken one is one byte long.
Character firstCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80)
        return {lead, 1, true};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const Character broken{0, 1, false};
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return broken;
    std::uint32_t code = lead & (0xFFu >> (length + 1));
    for (std::size_t place = 1; place < length; ++place) {
        const auto byte = static_cast<unsigned char>(text[place]);
        if ((byte & 0xC0) != 0x80)
            return broken;
        code = code << 6 | (byte & 0x3Fu);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < smallest[length] || code > 0x10FFFF || surrogate)
        return broken;
    return {code, length, true};
}

bool isBlank(std::uint32_t code) {
    return code == ' ' || (code >= '\t' && code <= '\r') || code == 0x85 || code == 0x2028;
}

bool isAllowed(std::uint32_t code) {
    return code >= 0x20 && (code < 0x7F || code > 0x9F) && code != 0xFFFE && code != 0xFFFF;
}

/// Whether a terminal shows what follows in another place than where it stands.
bool turnsDirection(std::uint32_t code) {
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

}  // namespace

std::string cleanText(std::string_view text) {
    std::string clean;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        if (!character.valid) {
            clean += replacement;
        } else if (isBlank(character.code)) {
            if (!clean.empty() && clean.back() != ' ')
                clean += ' ';
        } else if (isAllowed(character.code)) {
            clean += text.substr(0, character.length);
        }
        text.remove_prefix(character.length);
    }
    if (!clean.empty() && clean.back() == ' ')
        clean.pop_back();
    return clean;
}

std::string visibleText(std::string_view text) {
    std::string visible;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        if (character.valid && isAllowed(character.code) && !turnsDirection(character.code))
            visible += text.substr(0, character.length);
        else
            visible += replacement;
        text.remove_prefix(character.length);
    }
    return visible;
}

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
