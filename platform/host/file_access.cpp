#include "file_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "posix/file_status.h"
#include "posix/retry_after_signal.h"

posix::FileDescriptor openRegularFile(const char* path) {
    posix::FileDescriptor file(posix::retryAfterSignal(
        [path] { return ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
    if (!file)
        return file;
    const std::optional<posix::FileStatus> status = posix::statusOf(file.get());
    if (status && S_ISREG(status->mode))
        return file;
    file.close();
    errno = status && S_ISDIR(status->mode) ? EISDIR : EINVAL;
    return file;
}

posix::FileDescriptor openForAppending(const char* path) {
    constexpr int flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC;
    return posix::FileDescriptor(
        posix::retryAfterSignal([path] { return ::open(path, flags, 0600); }));
}

bool readBlocks(const posix::FileDescriptor& file,
                const std::function<void(std::string_view)>& consume) {
    std::array<char, 65536> block;
    for (;;) {
        const ssize_t count =
            posix::retryAfterSignal([&] { return ::read(file.get(), block.data(), block.size()); });
        if (count <= 0)
            return count == 0;
        consume({block.data(), static_cast<std::size_t>(count)});
    }
}

std::optional<std::string> readAll(const posix::FileDescriptor& file) {
    std::string content;
    if (!readBlocks(file, [&content](std::string_view block) { content += block; }))
        return std::nullopt;
    return content;
}
