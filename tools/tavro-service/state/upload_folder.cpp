#include "state/upload_folder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace fs = std::filesystem;

namespace tavro::service {

UploadFolder::UploadFolder(const fs::path& database) : temporary_(database.empty()) {
    if (!temporary_) {
        path_ = database.string() + ".uploads";
        fs::create_directory(path_);
        return;
    }
    std::string name = fs::temp_directory_path() / "tavro-service-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), name);
    path_ = name;
}

UploadFolder::~UploadFolder() {
    std::error_code ignored;
    if (temporary_)
        fs::remove_all(path_, ignored);
}

}  // namespace tavro::service
