#pragma once

#include <cstddef>
#include <filesystem>

namespace tavro::service {

/// A file that is removed again when the object goes, or no file at all.
class TemporaryFile {
public:
    TemporaryFile() = default;

    /// Makes an empty file in `folder`. Throws `std::system_error`.
    explicit TemporaryFile(const std::filesystem::path& folder);

    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    TemporaryFile(TemporaryFile&& other) noexcept;
    TemporaryFile& operator=(TemporaryFile&& other) noexcept;

    /// Whether there is a file.
    explicit operator bool() const { return descriptor_ != -1; }

    /// Appends `size` bytes. Throws `std::system_error`, as when the disk is full.
    void write(const char* bytes, std::size_t size);

    /// Path of the file. Whoever renames it keeps it.
    const std::filesystem::path& path() const { return path_; }

private:
    int descriptor_ = -1;
    std::filesystem::path path_;
};

}  // namespace tavro::service
