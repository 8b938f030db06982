#include "posix/file_status.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace posix {

namespace {

/// What a call with the outcome `outcome` has told in `status`.
std::optional<FileStatus> told(long outcome, const struct stat& status) {
    if (outcome != 0)
        return std::nullopt;
    return FileStatus{status.st_mode, status.st_size};
}

}  // namespace

#if defined(SYS_stat64) && defined(__GLIBC__) && !defined(__USE_TIME_BITS64)
// A 32-bit machine whose dates end in 2038. The C library would check the dates, by calls that
// those of old devices do not have; the system itself fills the same record and cuts them.
static_assert(sizeof(off_t) == 8 && sizeof(time_t) == 4);

std::optional<FileStatus> statusOf(int descriptor) {
    struct stat status = {};
    return told(::syscall(SYS_fstat64, descriptor, &status), status);
}

std::optional<FileStatus> statusOf(const char* path) {
    struct stat status = {};
    return told(::syscall(SYS_stat64, path, &status), status);
}
#else
std::optional<FileStatus> statusOf(int descriptor) {
    struct stat status = {};
    return told(::fstat(descriptor, &status), status);
}

std::optional<FileStatus> statusOf(const char* path) {
    struct stat status = {};
    return told(::stat(path, &status), status);
}
#endif

bool exists(const std::string& path) {
    return ::access(path.c_str(), F_OK) == 0;
}

}  // namespace posix
