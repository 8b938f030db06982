#pragma once

#include <string_view>

namespace posix {

/// Writes all of `bytes` to `descriptor`, with one call unless the system takes fewer at a time.
/// @return false, with `errno` set, when a write fails.
bool writeAll(int descriptor, std::string_view bytes);

}  // namespace posix
