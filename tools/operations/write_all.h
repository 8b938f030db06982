#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace reader {

/// Writes all of `content` to `descriptor`, however many calls that takes. @return false, with
/// `errno` set, when that is not possible.
inline bool writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), content.size());
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace reader
