#include "posix/temporary_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "posix/flush.h"
#include "posix/retry_after_signal.h"
#include "posix/system_error.h"
#include "posix/write_all.h"

namespace posix {

TemporaryFile::TemporaryFile(const std::string& beginning, const std::string& purpose)
    : path_(beginning + "XXXXXX"), purpose_(purpose.empty() ? path_ : purpose) {
    file_ = FileDescriptor(::mkostemp(path_.data(), O_CLOEXEC));
    if (!file_)
        throwSystemError("cannot write", purpose_);
    ::flock(file_.get(), LOCK_EX);  // nobody else has the name: it never waits
}

TemporaryFile::~TemporaryFile() {
    if (file_)
        ::unlink(path_.c_str());
}

TemporaryFile& TemporaryFile::operator=(TemporaryFile&& other) noexcept {
    std::swap(file_, other.file_);
    std::swap(path_, other.path_);
    std::swap(purpose_, other.purpose_);
    return *this;
}

void TemporaryFile::write(std::string_view bytes) {
    if (!writeAll(file_.get(), bytes))
        throwSystemError("cannot write", purpose_);
}

void TemporaryFile::renameTo(const std::string& path) {
    if (retryAfterSignal([this] { return ::fsync(file_.get()); }) != 0)
        throwSystemError("cannot write", path);
    if (std::rename(path_.c_str(), path.c_str()) != 0)
        throwSystemError("cannot write", path);
    file_.close();
    flushFolderOf(path);
}

}  // namespace posix
