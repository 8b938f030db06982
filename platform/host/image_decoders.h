#pragma once

#include <optional>
#include <string_view>

#include "grey_image.h"

// Each decoder gives the picture in its own size, from the whole content of a file; nothing when
// that is damaged, cut short, of another format or too large (`isDecodable`). They throw when
// memory is short.

/// No CMYK.
std::optional<GreyImage> decodeJpeg(std::string_view file);

/// Over white where the picture is transparent.
std::optional<GreyImage> decodePng(std::string_view file);

/// From an uncompressed file of 1, 4, 8, 24 or 32 bits a pixel.
std::optional<GreyImage> decodeBmp(std::string_view file);
