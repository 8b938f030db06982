#pragma once

#include <string>
#include <string_view>

namespace tavro::service {

/// Media type of the image `bytes`: JPEG or PNG; empty if it is neither.
std::string imageType(std::string_view bytes);

}  // namespace tavro::service
