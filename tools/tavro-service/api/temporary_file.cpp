#include "api/temporary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

namespace tavro::service {

TemporaryFile::TemporaryFile(const std::filesystem::path& folder) {
    std::string name = folder / "receiving-XXXXXX";
    descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ == -1)
        throw std::system_error(errno, std::generic_category(), name);
    path_ = name;
}

TemporaryFile::~TemporaryFile() {
    if (descriptor_ == -1)
        return;
    ::close(descriptor_);
    ::unlink(path_.c_str());
}

TemporaryFile::TemporaryFile(TemporaryFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_)) {}

TemporaryFile& TemporaryFile::operator=(TemporaryFile&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    std::swap(path_, other.path_);
    return *this;
}

void TemporaryFile::write(const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(descriptor_, bytes, size);
        if (written == -1 && errno != EINTR)
            throw std::system_error(errno, std::generic_category(), path_.string());
        if (written > 0) {
            bytes += written;
            size -= static_cast<std::size_t>(written);
        }
    }
}

}  // namespace tavro::service
