#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "posix/file_descriptor.h"

/// Opens the regular file `path` for reading. None, with `errno` set, when that fails or it is
/// something else (a folder, a pipe, a device); never waits for the other end of a pipe.
posix::FileDescriptor openRegularFile(const char* path);

/// Opens `path` for appending; a new file is readable by its owner only. None, with `errno` set,
/// when that fails.
posix::FileDescriptor openForAppending(const char* path);

/// Passes all that is left of `file` to `consume`, block by block.
/// @return false, with `errno` set, when a read fails.
bool readBlocks(const posix::FileDescriptor& file,
                const std::function<void(std::string_view)>& consume);

/// All that is left of `file`; nothing, with `errno` set, when a read fails.
std::optional<std::string> readAll(const posix::FileDescriptor& file);
