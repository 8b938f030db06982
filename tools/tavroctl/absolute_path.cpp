#include "tavroctl/absolute_path.h"

#include <filesystem>

#include "program/failure.h"

namespace fs = std::filesystem;

namespace tavro::tools {

std::string absolutePath(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::absolute(path, error);
    if (error)
        throw Failure("the working folder cannot be told: " + error.message(),
                      "run the command in another folder, or give full paths");
    return whole.lexically_normal();
}

}  // namespace tavro::tools
