#pragma once

#include <string>

namespace tavro::device_check {

/// A folder of its own, hidden, that goes with all files in it. A program that is killed leaves it
/// behind; it holds nothing that anybody needs.
class ScratchFolder {
public:
    /// Makes it in `parent`. Throws `std::system_error`.
    explicit ScratchFolder(const std::string& parent);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// Full path.
    const std::string& path() const { return path_; }

    /// Removes all files in it.
    void clear() const;

private:
    std::string path_;
};

}  // namespace tavro::device_check
