#pragma once

#include <filesystem>
#include <string>

namespace reader {

/// Makes `content` the whole content of the file `path` (mode 0600); after a failure or a crash it
/// has the old content or the new one, never a part. Throws Failure.
void writeAtomically(const std::string& path, const std::string& content);

/// Copies the file `source` to `target`, which has its old content until all of the new is there.
/// Throws `std::filesystem::filesystem_error`.
void copyAtomically(const std::filesystem::path& source, const std::filesystem::path& target);

/// Throws the Failure that the file `path` cannot be written, with the reason that `errno` gives.
[[noreturn]] void throwCannotWrite(const std::string& path);

}  // namespace reader
