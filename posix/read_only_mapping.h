#pragma once

#include <cstddef>

namespace posix {

/// A whole file mapped into memory, read-only and shared, for as long as the object lives.
class ReadOnlyMapping {
public:
    /// Maps the open file `descriptor`, which may be closed afterwards. Fails, as the system does,
    /// for an empty file.
    explicit ReadOnlyMapping(int descriptor);
    ~ReadOnlyMapping();
    ReadOnlyMapping(const ReadOnlyMapping&) = delete;
    ReadOnlyMapping& operator=(const ReadOnlyMapping&) = delete;

    /// Whether the file is mapped.
    explicit operator bool() const { return data_ != nullptr; }

    /// First byte of the file; null when it is not mapped.
    const char* data() const { return data_; }

    /// Size of the file in bytes when it was mapped.
    std::size_t size() const { return size_; }

private:
    const char* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace posix
