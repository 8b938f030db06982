#include "api/content.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace tavro::service {

Content contentOf(std::string text) {
    const std::size_t size = text.size();
    return {size, [text = std::move(text)](std::size_t offset, char* buffer, std::size_t capacity) {
                return text.copy(buffer, capacity, offset);
            }};
}

Content contentOfFile(const std::filesystem::path& path) {
    const int opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (opened == -1)
        throw std::system_error(errno, std::generic_category(), path.string());
    const std::shared_ptr<const int> file(new int(opened), [](const int* descriptor) {
        ::close(*descriptor);
        delete descriptor;
    });
    struct stat status = {};
    if (::fstat(opened, &status) == -1)
        throw std::system_error(errno, std::generic_category(), path.string());
    return {static_cast<std::size_t>(status.st_size),
            [file](std::size_t offset, char* buffer, std::size_t capacity) {
                const ssize_t got = ::pread(*file, buffer, capacity, static_cast<off_t>(offset));
                return static_cast<std::size_t>(got > 0 ? got : 0);
            }};
}

}  // namespace tavro::service
