#pragma once

#include <fstream>
#include <optional>
#include <string>

/// A placeholder stands in the sync folder for a book that is still to be downloaded.
namespace placeholder {

/// What its name ends with.
inline constexpr char extension[] = ".file";

/// The item id that the placeholder `path` holds, its first word; empty when it holds none, nothing
/// when it cannot be read.
inline std::optional<std::string> itemIn(const std::string& path) {
    std::ifstream stream(path);
    if (!stream)
        return std::nullopt;
    std::string word;
    stream >> word;
    return word;
}

}  // namespace placeholder
