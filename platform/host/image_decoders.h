#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include "grey_image.h"

// Each decoder takes the whole content of a file and gives nothing when that is damaged, cut short,
// of another format or too large (`isDecodable`). They throw when memory is short.

/// The picture in the size that `target` makes of its own one; decoded no larger than that needs.
std::optional<GreyImage> decodeJpeg(std::string_view file,
                                    const std::function<ImageSize(ImageSize)>& target);

/// The picture in its own size, over white where it is transparent.
std::optional<GreyImage> decodePng(std::string_view file);

/// The picture in its own size, from an uncompressed file of 1, 4, 8, 24 or 32 bits a pixel.
std::optional<GreyImage> decodeBmp(std::string_view file);
