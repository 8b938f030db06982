#pragma once

#include <array>
#include <cstddef>

namespace platform {

/// The constant texts `parts`, one behind the other, as a zero-terminated constant of its own.
template <std::size_t... Sizes>
constexpr auto joined(const char (&... parts)[Sizes]) {
    std::array<char, (Sizes + ...) - sizeof...(Sizes) + 1> text{};
    std::size_t length = 0;
    const auto append = [&](const char* part, std::size_t size) {
        for (std::size_t i = 0; i + 1 < size; ++i)
            text[length++] = part[i];
    };
    (append(parts, Sizes), ...);
    return text;
}

}  // namespace platform
