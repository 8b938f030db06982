#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace posix {

/// What the system knows of a file, without its dates: the C library of a 32-bit machine refuses to
/// tell anything of a file whose dates lie after January 2038.
struct FileStatus {
    mode_t mode;  ///< kind and permissions
    off_t size;   ///< in bytes
};

/// The status of the open file `descriptor`; nothing, with `errno` set, when there is none.
std::optional<FileStatus> statusOf(int descriptor);

/// The status of the file `path`, links followed; nothing, with `errno` set, when there is none.
std::optional<FileStatus> statusOf(const char* path);

/// Whether there is a file `path`, links followed, of whatever kind and date.
bool exists(const std::string& path);

}  // namespace posix
