#pragma once

#include <cstdint>
#include <optional>
#include <vector>

/// Width and height in pixels.
struct ImageSize {
    std::int64_t width = 0;
    std::int64_t height = 0;
};

/// 8-bit grey pixels, row by row from the upper left corner, 0 black and 255 white.
struct GreyImage {
    ImageSize size;
    std::vector<std::uint8_t> pixels;
};

/// Whether a decoder takes on a picture that announces this size. The limits (65535 for a side,
/// 2^25 pixels) keep a few hostile bytes from claiming all memory.
bool isDecodable(ImageSize size);

/// The largest size with the proportions of `source` that fits into `frame`; no side becomes 0.
ImageSize fitted(ImageSize source, ImageSize frame);

/// The brightness of a colour as the eye sees it.
inline std::uint8_t greyOf(unsigned red, unsigned green, unsigned blue) {
    return static_cast<std::uint8_t>((299 * red + 587 * green + 114 * blue + 500) / 1000);
}

/// `image` in another size: each pixel is the mean of the area that it covers.
GreyImage scaled(const GreyImage& image, ImageSize size);

/// `image` with another contrast around middle grey, and then another brightness; both in percent,
/// 100 is neutral.
GreyImage adjusted(GreyImage image, int brightness, int contrast);
