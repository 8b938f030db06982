#pragma once

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>

/// The decimal number that makes up the whole of `text`, or nothing when there is none or it does
/// not fit into an int.
inline std::optional<int> parseDecimal(std::string_view text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end)
        return std::nullopt;
    return number;
}

/// The number in the environment variable `name`, or `fallback` when it is unset or malformed.
inline int environmentNumber(const char* name, int fallback) {
    const char* const text = std::getenv(name);
    return text == nullptr ? fallback : parseDecimal(text).value_or(fallback);
}
