#include <png.h>

#include <memory>

#include "image_decoders.h"

namespace {

std::uint8_t overWhite(unsigned grey, unsigned opacity) {
    return static_cast<std::uint8_t>((grey * opacity + 255 * (255 - opacity) + 127) / 255);
}

}  // namespace

std::optional<GreyImage> decodePng(std::string_view file) {
    constexpr std::size_t channels = 4;
    png_image reader{};
    const std::unique_ptr<png_image, decltype(&png_image_free)> owner(&reader, png_image_free);
    reader.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&reader, file.data(), file.size()) == 0)
        return std::nullopt;
    GreyImage image{{reader.width, reader.height}, {}};
    if (!isDecodable(image.size))
        return std::nullopt;
    reader.format = PNG_FORMAT_RGBA;
    reader.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    const std::size_t count = std::size_t{reader.width} * reader.height;
    // Not cleared first: memory is taken only as rows really come in.
    const std::unique_ptr<png_byte[]> colours(new png_byte[count * channels]);
    if (png_image_finish_read(&reader, nullptr, colours.get(), 0, nullptr) == 0)
        return std::nullopt;
    image.pixels.reserve(count);
    for (const png_byte* pixel = colours.get(); image.pixels.size() < count; pixel += channels)
        image.pixels.push_back(overWhite(greyOf(pixel[0], pixel[1], pixel[2]), pixel[3]));
    return image;
}
