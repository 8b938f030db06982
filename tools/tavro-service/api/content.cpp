#include "api/content.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <utility>

#include "posix/file_descriptor.h"
#include "posix/system_error.h"

namespace tavro::service {

Content contentOf(std::string text) {
    const std::size_t size = text.size();
    return {size, [text = std::move(text)](std::size_t offset, char* buffer, std::size_t capacity) {
                return text.copy(buffer, capacity, offset);
            }};
}

Content contentOfFile(const std::filesystem::path& path) {
    const auto file =
        std::make_shared<const posix::FileDescriptor>(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    if (!*file || ::fstat(file->get(), &status) == -1)
        posix::throwSystemError("cannot read", path);
    return {static_cast<std::size_t>(status.st_size),
            [file](std::size_t offset, char* buffer, std::size_t capacity) {
                const ssize_t got =
                    ::pread(file->get(), buffer, capacity, static_cast<off_t>(offset));
                return static_cast<std::size_t>(got > 0 ? got : 0);
            }};
}

}  // namespace tavro::service
