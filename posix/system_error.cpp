#include "posix/system_error.h"

#include <cerrno>
#include <system_error>

namespace posix {

void throwSystemError(const std::string& operation, const std::string& path) {
    throw std::system_error(errno, std::generic_category(), operation + " " + path);
}

}  // namespace posix
