#include "account/files.h"

#include <cerrno>
#include <cstring>
#include <system_error>

#include "account/failure.h"
#include "posix/atomic_file.h"

namespace tavro::tools {

namespace {

constexpr const char* advice = "free space or check the permissions";

template <typename Action>
void failing(Action action) {
    try {
        action();
    } catch (const std::system_error& error) {
        throw Failure(error.what(), advice);
    }
}

}  // namespace

void replaceFile(const std::string& path, std::string_view content) {
    failing([&] { posix::replaceFile(path, content); });
}

void replaceByCopy(const std::string& path, const std::string& source) {
    failing([&] { posix::replaceByCopy(path, source); });
}

void throwCannotWrite(const std::string& path) {
    const std::string reason = errno == 0 ? "" : std::string(": ") + std::strerror(errno);
    throw Failure("cannot write " + path + reason, advice);
}

}  // namespace tavro::tools
