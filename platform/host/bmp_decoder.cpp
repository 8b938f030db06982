#include <cstdlib>

#include "image_decoders.h"
#include "little_endian.h"

namespace {

constexpr std::size_t file_header_size = 14;
constexpr std::size_t headers_size = file_header_size + 40;

/// The unsigned number at `offset`, which lies in the file.
template <typename Unsigned>
Unsigned number(std::string_view file, std::size_t offset) {
    return fromLittleEndian<Unsigned>(file.substr(offset, sizeof(Unsigned)).data());
}

/// Grey value of the colour whose blue, green and red bytes begin at `offset`.
std::uint8_t greyAt(std::string_view bytes, std::size_t offset) {
    return greyOf(number<std::uint8_t>(bytes, offset + 2), number<std::uint8_t>(bytes, offset + 1),
                  number<std::uint8_t>(bytes, offset));
}

/// Where the pixels stand and what they mean.
struct Layout {
    ImageSize size;
    bool topDown = false;
    unsigned depth = 0;
    std::size_t pixelOffset = 0;
    std::vector<std::uint8_t> palette = {};

    std::size_t rowSize() const {
        return (static_cast<std::size_t>(size.width) * depth + 31) / 32 * 4;
    }
    std::string_view row(std::string_view file, std::int64_t y) const {
        const auto index = static_cast<std::size_t>(topDown ? y : size.height - 1 - y);
        return file.substr(pixelOffset + index * rowSize(), rowSize());
    }
};

/// Whether the pixels stand as they are: blue, green and red in this order.
bool isPlain(std::string_view file, unsigned depth) {
    constexpr std::uint32_t uncompressed = 0;
    constexpr std::uint32_t bit_fields = 3;
    const auto compression = number<std::uint32_t>(file, 30);
    if (compression == uncompressed)
        return depth == 1 || depth == 4 || depth == 8 || depth == 24 || depth == 32;
    constexpr std::string_view masks("\0\0\xff\0\0\xff\0\0\xff\0\0\0", 12);
    return compression == bit_fields && depth == 32 &&
           file.substr(headers_size, masks.size()) == masks;
}

/// Reads the palette, which ends before the pixels; false when it does not.
bool readPalette(std::string_view file, Layout& layout) {
    const std::size_t start = file_header_size + number<std::uint32_t>(file, file_header_size);
    const std::size_t possible = layout.depth > 8 ? 0 : std::size_t{1} << layout.depth;
    const auto used = number<std::uint32_t>(file, 46);
    const std::size_t colours = used == 0 || possible == 0 ? possible : used;
    if (start < headers_size || start > layout.pixelOffset || colours > possible ||
        4 * colours > layout.pixelOffset - start)
        return false;
    for (std::size_t i = 0; i < colours; ++i)
        layout.palette.push_back(greyAt(file, start + 4 * i));
    return true;
}

std::optional<Layout> layoutOf(std::string_view file) {
    if (file.size() < headers_size || file.substr(0, 2) != "BM")
        return std::nullopt;
    const auto width = static_cast<std::int32_t>(number<std::uint32_t>(file, 18));
    const auto height = static_cast<std::int32_t>(number<std::uint32_t>(file, 22));
    Layout layout{{width, std::abs(std::int64_t{height})}, height < 0};
    layout.depth = number<std::uint16_t>(file, 28);
    layout.pixelOffset = number<std::uint32_t>(file, 10);
    if (!isDecodable(layout.size) || !isPlain(file, layout.depth) ||
        layout.pixelOffset > file.size() || !readPalette(file, layout) ||
        layout.rowSize() * static_cast<std::size_t>(layout.size.height) >
            file.size() - layout.pixelOffset)
        return std::nullopt;
    return layout;
}

/// Grey value of pixel `x` of `row`; nothing when the palette lacks its colour.
std::optional<std::uint8_t> pixelAt(std::string_view row, std::size_t x, const Layout& layout) {
    const std::size_t bit = x * layout.depth;
    if (layout.depth > 8)
        return greyAt(row, bit / 8);
    const unsigned above = number<std::uint8_t>(row, bit / 8) >> (8 - layout.depth - bit % 8);
    const std::size_t index = above & ((1U << layout.depth) - 1);
    return index < layout.palette.size() ? std::optional(layout.palette[index]) : std::nullopt;
}

}  // namespace

std::optional<GreyImage> decodeBmp(std::string_view file) {
    const std::optional<Layout> layout = layoutOf(file);
    if (!layout)
        return std::nullopt;
    GreyImage image{layout->size, {}};
    for (std::int64_t y = 0; y < image.size.height; ++y) {
        const std::string_view row = layout->row(file, y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(image.size.width); ++x) {
            const std::optional<std::uint8_t> pixel = pixelAt(row, x, *layout);
            if (!pixel)
                return std::nullopt;
            image.pixels.push_back(*pixel);
        }
    }
    return image;
}
