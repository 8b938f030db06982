#include "tavroctl/picture.h"

#include <png.h>

#include <algorithm>
#include <string_view>

#include "program/failure.h"

namespace tavro::tools {

namespace {

constexpr std::string_view ramp = " .:-=+*#%@";  // from black to white

/// The part `index` of `size` pixels cut into `parts`; at least one pixel when `parts` <= `size`.
struct Part {
    Part(unsigned index, unsigned parts, unsigned size)
        : begin(index * size / parts), end((index + 1) * size / parts) {}

    unsigned begin;
    unsigned end;
};

/// The character for the mean of the pixels in `columns` and `rows`.
char cell(LecternBitmap& bitmap, Part columns, Part rows) {
    unsigned long sum = 0;
    unsigned long pixels = 0;
    for (unsigned y = rows.begin; y < rows.end; ++y) {
        const unsigned char* row = LecternBitmapPixels(&bitmap) + std::size_t(y) * bitmap.row_bytes;
        for (unsigned x = columns.begin; x < columns.end; ++x, ++pixels)
            sum += row[x];
    }
    return ramp[sum * ramp.size() / (std::max(pixels, 1UL) * 256)];
}

}  // namespace

std::string asPng(LecternBitmap& bitmap) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = bitmap.width;
    image.height = bitmap.height;
    image.format = PNG_FORMAT_GRAY;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string content(size, '\0');
    if (png_image_write_to_memory(&image, content.data(), &size, 0, LecternBitmapPixels(&bitmap),
                                  bitmap.row_bytes, nullptr) == 0)
        throw Failure(std::string("the picture cannot be made a PNG: ") + image.message);
    content.resize(size);
    return content;
}

std::vector<std::string> asCharacters(LecternBitmap& bitmap, Window room) {
    const unsigned width = bitmap.width;
    const unsigned height = bitmap.height;
    const unsigned widest = std::min(room.columns, 2 * room.rows * width / height);
    const unsigned columns = std::clamp(widest, 1U, width);  // no more cells than pixels
    const unsigned highest = std::min(room.rows, height);
    const unsigned rows = std::clamp((columns * height + width) / (2 * width), 1U, highest);
    std::vector<std::string> lines(rows);
    for (unsigned row = 0; row < rows; ++row)
        for (unsigned column = 0; column < columns; ++column)
            lines[row] += cell(bitmap, {column, columns, width}, {row, rows, height});
    return lines;
}

}  // namespace tavro::tools
