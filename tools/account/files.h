#pragma once

#include <string>
#include <string_view>

namespace tavro::tools {

// Files of the account and books, replaced as posix/atomic_file.h does it: the old content stays
// until all of the new is on the disk. What goes wrong is thrown as Failure.

/// Makes `content` the whole content of the file `path` (mode 0600).
void replaceFile(const std::string& path, std::string_view content);

/// Makes the file `path` a copy of the file `source`.
void replaceByCopy(const std::string& path, const std::string& source);

/// Throws the Failure that the file `path` cannot be written, with the reason that `errno` gives.
[[noreturn]] void throwCannotWrite(const std::string& path);

}  // namespace tavro::tools
