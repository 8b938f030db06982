#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "posix/file_descriptor.h"

namespace posix {

/// A file under a name of its own that is removed again when the object goes, unless it was given
/// its final name; or no file at all. It is locked (`flock`) for as long as it is open, so that one
/// whose process was killed can be told from one that is being written.
class TemporaryFile {
public:
    /// No file.
    TemporaryFile() = default;

    /// Makes an empty file (mode 0600) called `beginning` and six more characters. Errors, of this
    /// and the other functions, name `purpose` if that is not empty: the file that it is to
    /// become. Throws `std::system_error`.
    explicit TemporaryFile(const std::string& beginning, const std::string& purpose = {});

    ~TemporaryFile();
    TemporaryFile(TemporaryFile&& other) noexcept = default;
    TemporaryFile& operator=(TemporaryFile&& other) noexcept;
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Whether there is a file.
    explicit operator bool() const { return static_cast<bool>(file_); }

    /// Full path of the file.
    const std::string& path() const { return path_; }

    /// Its open descriptor.
    int descriptor() const { return file_.get(); }

    /// Appends `bytes`. Throws `std::system_error`, as when the disk is full.
    void write(std::string_view bytes);

    /// Waits until all bytes are on the disk and renames the file to `path`, which it replaces; the
    /// rename itself is on the disk, too, when this returns. Throws `std::system_error`; `path` is
    /// as it was then.
    void renameTo(const std::string& path);

private:
    FileDescriptor file_{-1};
    std::string path_;
    std::string purpose_;
};

}  // namespace posix
