#include "posix/atomic_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <system_error>

#include "posix/file_status.h"
#include "posix/retry_after_signal.h"
#include "posix/system_error.h"
#include "posix/temporary_file.h"

namespace fs = std::filesystem;

namespace posix {

namespace {

constexpr std::size_t block_size = 65536;

/// An empty file in the folder of `path` with the permissions `mode`.
TemporaryFile replacementOf(const std::string& path, mode_t mode) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    TemporaryFile replacement(folder + std::string(replacement_prefix), path);
    if (::fchmod(replacement.descriptor(), mode) != 0)
        throwSystemError("cannot write", path);
    return replacement;
}

}  // namespace

void replaceFile(const std::string& path, std::string_view content, mode_t mode) {
    TemporaryFile replacement = replacementOf(path, mode);
    replacement.write(content);
    replacement.renameTo(path);
}

void replaceByCopy(const std::string& path, const std::string& source) {
    const FileDescriptor original(
        retryAfterSignal([&source] { return ::open(source.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!original)
        throwSystemError("cannot read", source);
    TemporaryFile replacement = replacementOf(path, modeOf(source, 0600));
    std::array<char, block_size> block;
    for (;;) {
        const ssize_t count =
            retryAfterSignal([&] { return ::read(original.get(), block.data(), block.size()); });
        if (count == -1)
            throwSystemError("cannot read", source);
        if (count == 0)
            break;
        replacement.write({block.data(), static_cast<std::size_t>(count)});
    }
    replacement.renameTo(path);
}

void removeAbandonedReplacements(const std::string& folder) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        if (name.compare(0, replacement_prefix.size(), replacement_prefix) != 0)
            continue;
        const FileDescriptor file(::open(entry->path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (file && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0)
            ::unlink(entry->path().c_str());
    }
}

mode_t modeOf(const std::string& path, mode_t otherwise) {
    const std::optional<FileStatus> status = statusOf(path.c_str());
    return status ? status->mode & 0777 : otherwise;
}

}  // namespace posix
