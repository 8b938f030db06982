#pragma once

#include <string_view>

namespace tavro::service {

/// Whether the file name `name` has the extension `extension` ("fb2.zip") in whatever letter case,
/// and something before it.
bool hasExtension(std::string_view name, std::string_view extension);

}  // namespace tavro::service
