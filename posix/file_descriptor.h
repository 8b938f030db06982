#pragma once

#include <unistd.h>

#include <utility>

namespace posix {

/// Owns an open file descriptor, or none (-1), and closes it when it goes.
class FileDescriptor {
public:
    /// Takes over `descriptor`, which may be the -1 of a failed open.
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    /// The descriptor, still owned here; -1 if none.
    int get() const { return descriptor_; }

    /// Whether a descriptor is open.
    explicit operator bool() const { return descriptor_ != -1; }

    /// Closes the descriptor and returns what `close` said; 0 if none is open.
    int close() {
        if (descriptor_ == -1)
            return 0;
        return ::close(std::exchange(descriptor_, -1));
    }

private:
    int descriptor_;
};

}  // namespace posix
