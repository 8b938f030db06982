#pragma once

#include <fstream>
#include <iomanip>
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
    constexpr int longest_item = 4096;  // whatever the file is, memory stays small
    std::string word;
    stream >> std::setw(longest_item) >> word;
    return word;
}

}  // namespace placeholder
