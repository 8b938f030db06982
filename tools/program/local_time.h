#pragma once

#include <array>
#include <ctime>
#include <string>

namespace tavro::tools {

/// Now, in the time zone of the device, as `format` says (see `strftime`): 31 bytes at most.
inline std::string localTime(const char* format) {
    const std::time_t now = std::time(nullptr);
    std::tm time{};
    ::localtime_r(&now, &time);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &time)};
}

}  // namespace tavro::tools
