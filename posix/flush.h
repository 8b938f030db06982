#pragma once

#include <string>

namespace posix {

/// Waits until the content of the file `path` and its entry in its folder are on the disk, whoever
/// has written them. Throws `std::system_error`.
void flushFile(const std::string& path);

/// Waits until the entries of the folder of `path` are on the disk. What was renamed is in place
/// whatever becomes of this, so a failure is none of the caller's.
void flushFolderOf(const std::string& path);

}  // namespace posix
