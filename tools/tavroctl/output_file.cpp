#include "tavroctl/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "account/files.h"
#include "console/quiet_library.h"
#include "posix/file_descriptor.h"
#include "posix/retry_after_signal.h"
#include "posix/write_all.h"

namespace tavro::tools {

namespace {

/// Whether `path` is a name of nothing yet, or of a regular file that is no link's.
bool canBeReplaced(const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

bool isStandardOutput(const Output& output, const std::string& path) {
    struct stat named = {};
    struct stat standard = {};
    return ::stat(path.c_str(), &named) == 0 && ::fstat(output.standardOutput(), &standard) == 0 &&
           named.st_dev == standard.st_dev && named.st_ino == standard.st_ino;
}

void writeInPlace(const std::string& path, std::string_view content) {
    posix::FileDescriptor file(posix::retryAfterSignal([&] {
        return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY | O_CLOEXEC, 0600);
    }));
    if (!file || !posix::writeAll(file.get(), content) || file.close() != 0)
        throwCannotWrite(path, errno);
}

}  // namespace

void writeOutputFile(const Output& output, const std::string& path, std::string_view content) {
    if (canBeReplaced(path))
        return replaceFile(path, content);
    const LoudAgain streams(output);
    if (!isStandardOutput(output, path))
        return writeInPlace(path, content);
    // Opened anew, a file would be written from its beginning, and again by what is printed next.
    if (!posix::writeAll(output.standardOutput(), content))
        throwCannotWrite(path, errno);
}

}  // namespace tavro::tools
