#include "account/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "posix/atomic_file.h"
#include "posix/file_descriptor.h"
#include "posix/flush.h"
#include "posix/retry_after_signal.h"
#include "program/failure.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

constexpr const char* advice_to_write = "free space or check the permissions";
constexpr const char* advice_to_read =
    "check its owner and permissions (a command run with sudo leaves files of root behind)";

/// Why a path leads to no file, however healthy the disk is.
constexpr std::errc reasons_of_odd_paths[] = {
    std::errc::no_such_file_or_directory, std::errc::not_a_directory,
    std::errc::too_many_symbolic_link_levels, std::errc::filename_too_long,
    std::errc::permission_denied};

/// ": CAUSE" for an `errno`, nothing for none.
std::string reasonOf(int error) {
    return error == 0 ? "" : ": " + std::generic_category().message(error);
}

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
        throwCannotRead(path, errno);
    return contentThrough(file.get(), path);
}

std::string contentThrough(int descriptor, const std::string& path) {
    std::string content;
    std::array<char, 65536> block;
    for (;;) {
        const ssize_t count =
            posix::retryAfterSignal([&] { return ::read(descriptor, block.data(), block.size()); });
        if (count == -1)
            throwCannotRead(path, errno);
        if (count == 0)
            return content;
        content.append(block.data(), static_cast<std::size_t>(count));
    }
}

void flush(const std::string& path) {
    failing([&] { posix::flushFile(path); });
}

void removeFile(const std::string& path) {
    if (::unlink(path.c_str()) == 0 || errno == ENOENT)
        return;
    const int error = errno;
    throw Failure("cannot remove " + path + reasonOf(error), advice_to_write);
}

bool exists(const std::string& path) {
    std::error_code error;
    const bool found = fs::symlink_status(path, error).type() != fs::file_type::not_found;
    if (found && error)
        throwCannotRead(path, error.value());
    return found;
}

bool isRegularFile(const std::string& path) {
    std::error_code error;
    const bool regular = fs::is_regular_file(path, error);
    const auto isOdd = [&](std::errc kind) { return error == kind; };
    if (error &&
        std::none_of(std::begin(reasons_of_odd_paths), std::end(reasons_of_odd_paths), isOdd))
        throwCannotRead(path, error.value());
    return regular;
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        names.push_back(entry->path().filename());
    if (error && error != std::errc::no_such_file_or_directory)
        throwCannotRead(folder, error.value());
    std::sort(names.begin(), names.end());
    return names;
}

void throwCannotRead(const std::string& path, int error) {
    throw Failure("cannot read " + path + reasonOf(error), advice_to_read);
}

void throwUnreadable(const std::string& path) {
    contentOf(path);  // throws when it meets the reason
    throwCannotRead(path, 0);
}

void throwCannotWrite(const std::string& path, int error) {
    throw Failure("cannot write " + path + reasonOf(error), advice_to_write);
}

void throwCannotLock(const std::string& path, int error) {
    throw Failure("cannot lock " + path + reasonOf(error),
                  "run the same command again, or see whether its file system has locks");
}

void throwNotWritten(const std::string& path) {
    throw Failure("cannot write " + path + ": it does not hold what was written", advice_to_write);
}

}  // namespace tavro::tools
