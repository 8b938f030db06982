#include <turbojpeg.h>

#include <memory>

#include "image_decoders.h"

std::optional<GreyImage> decodeJpeg(std::string_view file) {
    const std::unique_ptr<void, decltype(&tjDestroy)> decoder(tjInitDecompress(), tjDestroy);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(file.data());
    int width = 0;
    int height = 0;
    int chroma = 0;
    int colours = 0;
    if (!decoder ||
        tjDecompressHeader3(decoder.get(), bytes, file.size(), &width, &height, &chroma,
                            &colours) != 0 ||
        !isDecodable({width, height}))
        return std::nullopt;
    GreyImage image{{width, height}, {}};
    image.pixels.resize(static_cast<std::size_t>(image.size.width * image.size.height));
    // The decoder fills a cut or damaged picture up and only warns.
    if (tjDecompress2(decoder.get(), bytes, file.size(), image.pixels.data(), width, 0, height,
                      TJPF_GRAY, TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS) != 0)
        return std::nullopt;
    return image;
}
