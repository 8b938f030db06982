#pragma once

#include <fcntl.h>

#include <string>

#include "posix/file_descriptor.h"
#include "posix/system_error.h"
#include "posix/write_all.h"

namespace tavro::device_check {

/// Opens the file `path`. Throws `std::system_error`.
inline posix::FileDescriptor openFile(const std::string& path, int flags) {
    posix::FileDescriptor file(::open(path.c_str(), flags | O_CLOEXEC, 0600));
    if (!file)
        posix::throwSystemError("cannot open", path);
    return file;
}

/// Makes `content` the whole content of the file `name` in `folder`. Throws `std::system_error`.
/// @return its full path.
inline std::string writeFile(const std::string& folder, const char* name,
                             const std::string& content) {
    std::string path = folder + "/" + name;
    if (!posix::writeAll(openFile(path, O_WRONLY | O_CREAT | O_TRUNC).get(), content))
        posix::throwSystemError("cannot write", path);
    return path;
}

}  // namespace tavro::device_check
