#pragma once

#include <string>

namespace tavro::tools {

/// Full path of `path`, without "." and "..". Throws Failure when the working folder, which a
/// relative one starts from, is gone.
std::string absolutePath(const std::string& path);

}  // namespace tavro::tools
