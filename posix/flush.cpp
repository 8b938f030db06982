#include "posix/flush.h"

#include <fcntl.h>
#include <unistd.h>

#include "posix/file_descriptor.h"
#include "posix/retry_after_signal.h"
#include "posix/system_error.h"

namespace posix {

void flushFile(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file || retryAfterSignal([&] { return ::fsync(file.get()); }) != 0)
        throwSystemError("cannot write", path);
    flushFolderOf(path);
}

void flushFolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory)
        retryAfterSignal([&] { return ::fsync(directory.get()); });
}

}  // namespace posix
