#include "posix/files.h"

#include <sys/stat.h>
#include <unistd.h>

#include "posix/file_status.h"

namespace posix {

namespace {

/// Whether `stream` is a regular file: a folder opens as well but has no content to measure.
bool isRegularFile(std::FILE* stream) {
    const std::optional<FileStatus> status = statusOf(::fileno(stream));
    return status && S_ISREG(status->mode);
}

}  // namespace

std::string readFile(const std::string& path) {
    const Stream stream(std::fopen(path.c_str(), "r"));
    if (!stream || !isRegularFile(stream.get()))
        return {};
    std::fseek(stream.get(), 0, SEEK_END);
    const long size = std::ftell(stream.get());
    if (size <= 0)
        return {};
    std::rewind(stream.get());
    std::string content(static_cast<std::size_t>(size), '\0');
    content.resize(std::fread(content.data(), 1, content.size(), stream.get()));
    return content;
}

void overwriteUnchecked(const std::string& path, const char* mode, const char* data,
                        std::size_t size) {
    const Stream stream(std::fopen(path.c_str(), mode));
    if (stream && size > 0)  // an empty vector has no bytes to point to
        std::fwrite(data, 1, size, stream.get());
}

void writeUnchecked(int descriptor, const void* data, std::size_t size) {
    [[maybe_unused]] const ssize_t outcome = ::write(descriptor, data, size);
}

}  // namespace posix
