#include "account/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "account/failure.h"
#include "posix/atomic_file.h"
#include "posix/file_descriptor.h"
#include "posix/flush.h"
#include "posix/retry_after_signal.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

constexpr const char* advice_to_write = "free space or check the permissions";
constexpr const char* advice_to_read =
    "check its owner and permissions (a command run with sudo leaves files of root behind)";

template <typename Action>
void failing(Action action) {
    try {
        action();
    } catch (const std::system_error& error) {
        throw Failure(error.what(), advice_to_write);
    }
}

}  // namespace

void replaceFile(const std::string& path, std::string_view content) {
    failing([&] { posix::replaceFile(path, content); });
}

void replaceByCopy(const std::string& path, const std::string& source) {
    failing([&] { posix::replaceByCopy(path, source); });
}

std::optional<std::string> contentOf(const std::string& path) {
    const posix::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file && errno == ENOENT)
        return std::nullopt;
    if (!file)
        throwCannotRead(path);
    std::string content;
    std::array<char, 65536> block;
    for (;;) {
        const ssize_t count =
            posix::retryAfterSignal([&] { return ::read(file.get(), block.data(), block.size()); });
        if (count == -1)
            throwCannotRead(path);
        if (count == 0)
            return content;
        content.append(block.data(), static_cast<std::size_t>(count));
    }
}

void flush(const std::string& path) {
    failing([&] { posix::flushFile(path); });
}

void removeFile(const std::string& path) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        throw Failure("cannot remove " + path + ": " + std::strerror(errno), advice_to_write);
}

bool exists(const std::string& path) {
    std::error_code error;
    const bool found = fs::symlink_status(path, error).type() != fs::file_type::not_found;
    if (found && error)
        throw Failure("cannot read " + path + ": " + error.message(), advice_to_read);
    return found;
}

bool isRegularFile(const std::string& path) {
    std::error_code unknown;
    return fs::is_regular_file(path, unknown);
}

void throwCannotRead(const std::string& path) {
    throw Failure("cannot read " + path + ": " + std::strerror(errno), advice_to_read);
}

void throwCannotWrite(const std::string& path) {
    const std::string reason = errno == 0 ? "" : std::string(": ") + std::strerror(errno);
    throw Failure("cannot write " + path + reason, advice_to_write);
}

void throwNotWritten(const std::string& path) {
    throw Failure("cannot write " + path + ": it does not hold what was written", advice_to_write);
}

}  // namespace tavro::tools
