#pragma once

#include <string>

namespace posix {

/// Throws the `std::system_error` that says "`operation` `path`: CAUSE" with the cause that `errno`
/// has, as in "cannot write /mnt/ext1/a.cfg: No space left on device".
[[noreturn]] void throwSystemError(const std::string& operation, const std::string& path);

}  // namespace posix
