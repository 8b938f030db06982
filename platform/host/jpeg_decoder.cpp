#include <turbojpeg.h>

#include <memory>

#include "image_decoders.h"

namespace {

struct DestroyDecoder {
    void operator()(void* decoder) const { tjDestroy(decoder); }
};

ImageSize scaledBy(tjscalingfactor factor, ImageSize size) {
    const auto side = [factor](std::int64_t length) {
        return (length * factor.num + factor.denom - 1) / factor.denom;
    };
    return {side(size.width), side(size.height)};
}

/// The smallest of the sizes in which the decoder can give a picture that is not below `target`.
ImageSize decodingSize(ImageSize own, ImageSize target) {
    int count = 0;
    const tjscalingfactor* const factors = tjGetScalingFactors(&count);
    ImageSize smallest = own;
    for (int i = 0; i < count; ++i) {
        const ImageSize size = scaledBy(factors[i], own);
        if (size.width >= target.width && size.height >= target.height &&
            size.width <= smallest.width && size.height <= smallest.height)
            smallest = size;
    }
    return smallest;
}

}  // namespace

std::optional<GreyImage> decodeJpeg(std::string_view file,
                                    const std::function<ImageSize(ImageSize)>& target) {
    const std::unique_ptr<void, DestroyDecoder> decoder(tjInitDecompress());
    const auto* const bytes = reinterpret_cast<const unsigned char*>(file.data());
    int width = 0;
    int height = 0;
    int chroma = 0;
    int colours = 0;
    if (!decoder || tjDecompressHeader3(decoder.get(), bytes, file.size(), &width, &height, &chroma,
                                        &colours) != 0)
        return std::nullopt;
    const ImageSize own{width, height};
    if (!isDecodable(own))
        return std::nullopt;
    const ImageSize wanted = target(own);
    GreyImage image{decodingSize(own, wanted), {}};
    image.pixels.resize(static_cast<std::size_t>(image.size.width * image.size.height));
    // The decoder fills a cut or damaged picture up and only warns.
    if (tjDecompress2(decoder.get(), bytes, file.size(), image.pixels.data(),
                      static_cast<int>(image.size.width), 0, static_cast<int>(image.size.height),
                      TJPF_GRAY, TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS) != 0)
        return std::nullopt;
    return scaled(image, wanted);
}
