#include "posix/system_error.h"

#include <cerrno>
#include <system_error>

namespace posix {

void throwSystemError(const std::string& operation, const std::string& path) {
    const int cause = errno;  // before the text is made, which may change it
    throw std::system_error(cause, std::generic_category(), operation + " " + path);
}

}  // namespace posix
