#pragma once

#include <filesystem>

namespace tavro::service {

/// The folder for the uploads of one service.
class UploadFolder {
public:
    /// Makes the folder: beside the state file `database`, or, if that is empty, a temporary one
    /// that goes with the object. Throws `std::system_error`.
    explicit UploadFolder(const std::filesystem::path& database);

    ~UploadFolder();
    UploadFolder(const UploadFolder&) = delete;
    UploadFolder& operator=(const UploadFolder&) = delete;

    /// Path of the folder.
    const std::filesystem::path& path() const { return path_; }

private:
    bool temporary_;
    std::filesystem::path path_;
};

}  // namespace tavro::service
