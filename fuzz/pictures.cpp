/// The decoders of pictures. Promises: bytes of any kind give a picture of a size that the project
/// takes on, with as many pixels as it has, or none; no file is two kinds of picture; fitting it
/// into a frame keeps it inside.

#include <optional>
#include <string_view>

#include "image_decoders.h"
#include "require.h"

namespace {

/// Pictures of more pixels are only decoded, for the fuzzer's speed.
constexpr std::int64_t small_picture = 1 << 16;

bool isWhole(const GreyImage& image) {
    return isDecodable(image.size) &&
           image.pixels.size() == static_cast<std::size_t>(image.size.width * image.size.height);
}

void check(const GreyImage& image) {
    require(isWhole(image), "a picture has as many pixels as it has");
    constexpr ImageSize frame{30, 40};
    const ImageSize size = fitted(image.size, frame);
    require(size.width >= 1 && size.height >= 1 && size.width <= frame.width &&
                size.height <= frame.height &&
                (size.width == frame.width || size.height == frame.height),
            "a fitted picture fills its frame in one direction");
    if (image.size.width * image.size.height > small_picture)
        return;
    const GreyImage result = adjusted(scaled(image, size), 100, 120);
    require(result.size.width == size.width && isWhole(result), "a scaled picture is whole");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    int kinds = 0;
    for (const auto decode : {decodeJpeg, decodePng, decodeBmp}) {
        const std::optional<GreyImage> image = decode(file);
        if (!image)
            continue;
        ++kinds;
        check(*image);
    }
    require(kinds <= 1, "no file is two kinds of picture");
    return 0;
}
