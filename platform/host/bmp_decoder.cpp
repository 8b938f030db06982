#include <algorithm>
#include <cstdlib>

#include "image_decoders.h"
#include "little_endian.h"

namespace {

constexpr std::size_t file_header_size = 14;
constexpr std::size_t smallest_size = file_header_size + 40;
constexpr std::size_t masks_offset = smallest_size;

/// The unsigned number at `offset`, which lies in the file.
template <typename Unsigned>
Unsigned number(std::string_view file, std::size_t offset) {
    return fromLittleEndian<Unsigned>(file.substr(offset, sizeof(Unsigned)).data());
}

unsigned byteAt(std::string_view file, std::size_t offset) {
    return static_cast<unsigned char>(file[offset]);
}

/// Grey value of the colour whose blue, green and red bytes begin at `offset`.
std::uint8_t colourAt(std::string_view file, std::size_t offset) {
    return greyOf(byteAt(file, offset + 2), byteAt(file, offset + 1), byteAt(file, offset));
}

/// What the headers tell, as far as the pixels' place and meaning depend on it.
struct Layout {
    ImageSize size;
    bool topDown = false;
    unsigned depth = 0;
    std::size_t paletteOffset = 0;
    std::size_t colours = 0;  // in the palette
    std::size_t pixelOffset = 0;

    std::size_t rowSize() const {
        return (static_cast<std::size_t>(size.width) * depth + 31) / 32 * 4;
    }
    std::size_t rowOffset(std::int64_t y) const {
        return pixelOffset +
               static_cast<std::size_t>(topDown ? y : size.height - 1 - y) * rowSize();
    }
};

/// Whether the pixels stand as they are: blue, green and red in this order.
bool isPlain(std::string_view file, unsigned depth) {
    constexpr std::uint32_t uncompressed = 0;
    constexpr std::uint32_t bit_fields = 3;
    const auto compression = number<std::uint32_t>(file, 30);
    if (compression == uncompressed)
        return depth == 1 || depth == 4 || depth == 8 || depth == 24 || depth == 32;
    return compression == bit_fields && depth == 32 && file.size() >= masks_offset + 12 &&
           number<std::uint32_t>(file, masks_offset) == 0xff0000 &&
           number<std::uint32_t>(file, masks_offset + 4) == 0xff00 &&
           number<std::uint32_t>(file, masks_offset + 8) == 0xff;
}

std::optional<Layout> layoutOf(std::string_view file) {
    if (file.size() < smallest_size || file.substr(0, 2) != "BM")
        return std::nullopt;
    const auto headerSize = number<std::uint32_t>(file, file_header_size);
    const auto height = static_cast<std::int32_t>(number<std::uint32_t>(file, 22));
    Layout layout;
    layout.size.width = static_cast<std::int32_t>(number<std::uint32_t>(file, 18));
    layout.size.height = std::abs(std::int64_t{height});
    layout.topDown = height < 0;
    layout.depth = number<std::uint16_t>(file, 28);
    layout.pixelOffset = number<std::uint32_t>(file, 10);
    if (headerSize < smallest_size - file_header_size || headerSize > file.size() ||
        !isPlain(file, layout.depth) || !isDecodable(layout.size))
        return std::nullopt;
    layout.paletteOffset = file_header_size + headerSize;
    if (layout.depth <= 8) {
        const std::size_t possible = std::size_t{1} << layout.depth;
        const auto used = number<std::uint32_t>(file, 46);
        layout.colours = used == 0 ? possible : used;
        if (layout.colours > possible)
            return std::nullopt;
    }
    return layout;
}

/// Whether palette and rows lie in the file, one behind the other.
bool isWithin(std::string_view file, const Layout& layout) {
    const std::size_t room = file.size() - std::min(file.size(), layout.pixelOffset);
    return layout.paletteOffset + 4 * layout.colours <= layout.pixelOffset &&
           layout.rowSize() * static_cast<std::size_t>(layout.size.height) <= room;
}

/// Grey value of pixel `x` of the row at `row`; nothing when the palette lacks its colour.
std::optional<std::uint8_t> pixelAt(std::string_view file, const Layout& layout, std::size_t row,
                                    std::size_t x) {
    const std::size_t bit = x * layout.depth;
    if (layout.depth > 8)
        return colourAt(file, row + bit / 8);
    const unsigned above = byteAt(file, row + bit / 8) >> (8 - layout.depth - bit % 8);
    const std::size_t index = above & ((1U << layout.depth) - 1);
    if (index >= layout.colours)
        return std::nullopt;
    return colourAt(file, layout.paletteOffset + 4 * index);
}

}  // namespace

std::optional<GreyImage> decodeBmp(std::string_view file) {
    const std::optional<Layout> layout = layoutOf(file);
    if (!layout || !isWithin(file, *layout))
        return std::nullopt;
    GreyImage image{layout->size, {}};
    image.pixels.reserve(static_cast<std::size_t>(image.size.width * image.size.height));
    for (std::int64_t y = 0; y < image.size.height; ++y) {
        for (std::int64_t x = 0; x < image.size.width; ++x) {
            const std::optional<std::uint8_t> pixel =
                pixelAt(file, *layout, layout->rowOffset(y), static_cast<std::size_t>(x));
            if (!pixel)
                return std::nullopt;
            image.pixels.push_back(*pixel);
        }
    }
    return image;
}
