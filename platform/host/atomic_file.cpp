#include "atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "file_access.h"

namespace {

/// A new file in `folder` that is unlinked on destruction unless it was given its final name.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& folder)
        : path_(folder / ".lectern-XXXXXX"), file_(::mkostemp(path_.data(), O_CLOEXEC)) {}
    ~TemporaryFile() {
        if (file_ && !renamed_)
            ::unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    explicit operator bool() const { return static_cast<bool>(file_); }

    bool fill(std::string_view content, mode_t mode) const {
        return ::fchmod(file_.get(), mode) == 0 && writeAll(file_.get(), content) &&
               posix::uninterrupted([this] { return ::fsync(file_.get()); }) == 0;
    }

    bool renameTo(const std::filesystem::path& path) {
        renamed_ = ::rename(path_.c_str(), path.c_str()) == 0;
        return renamed_;
    }

private:
    std::string path_;
    posix::FileDescriptor file_;
    bool renamed_ = false;
};

mode_t modeFor(const std::filesystem::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0600;
}

}  // namespace

bool replaceFile(const std::filesystem::path& path, std::string_view content) {
    const std::filesystem::path folder = path.parent_path();
    TemporaryFile temporary(folder);
    if (!temporary || !temporary.fill(content, modeFor(path)) || !temporary.renameTo(path))
        return false;
    // The new file is in place whatever becomes of this, so a failure is none of the caller's.
    const posix::FileDescriptor directory(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory)
        posix::uninterrupted([&] { return ::fsync(directory.get()); });
    return true;
}
