#pragma once

#include <string>

namespace transport {

/// What the name of a book ends with until it is whole.
inline constexpr const char* partial_suffix = ".downloading";

/// Where a book that is announced as `name` lies in the folder `folder` until it is whole.
inline std::string partialFile(const std::string& folder, const std::string& name) {
    return folder + "/" + name + partial_suffix;
}

}  // namespace transport
