#include "grey_image.h"

#include <algorithm>
#include <cstddef>

namespace {

/// Calls `visit(position, share)` for the source positions that `index` of `to` positions covers of
/// `from`; the shares add up to `from`.
template <typename Visit>
void forCovered(std::int64_t index, std::int64_t from, std::int64_t to, Visit visit) {
    const std::int64_t start = index * from;
    const std::int64_t end = start + from;
    for (std::int64_t position = start / to; position * to < end; ++position) {
        const std::int64_t share =
            std::min(end, (position + 1) * to) - std::max(start, position * to);
        visit(static_cast<std::size_t>(position), static_cast<std::uint64_t>(share));
    }
}

/// For each column of `image` the sum of what row `y` of `height` rows covers.
std::vector<std::uint64_t> columnSums(const GreyImage& image, std::int64_t y, std::int64_t height) {
    std::vector<std::uint64_t> sums(static_cast<std::size_t>(image.size.width));
    forCovered(y, image.size.height, height, [&](std::size_t row, std::uint64_t share) {
        const std::uint8_t* pixel = &image.pixels[row * sums.size()];
        for (std::uint64_t& sum : sums)
            sum += share * *pixel++;
    });
    return sums;
}

}  // namespace

bool isDecodable(ImageSize size) {
    constexpr std::int64_t longest_side = 65535;
    constexpr std::int64_t most_pixels = std::int64_t{1} << 25;
    return size.width > 0 && size.width <= longest_side && size.height > 0 &&
           size.height <= longest_side && size.width * size.height <= most_pixels;
}

ImageSize fitted(ImageSize source, ImageSize frame) {
    const auto other = [](std::int64_t side, std::int64_t numerator, std::int64_t denominator) {
        return std::max<std::int64_t>(1, (2 * side * numerator + denominator) / (2 * denominator));
    };
    if (frame.width * source.height <= frame.height * source.width)
        return {frame.width, other(frame.width, source.height, source.width)};
    return {other(frame.height, source.width, source.height), frame.height};
}

GreyImage scaled(const GreyImage& image, ImageSize size) {
    const auto covered = static_cast<std::uint64_t>(image.size.width * image.size.height);
    GreyImage result{size, {}};
    result.pixels.reserve(static_cast<std::size_t>(size.width * size.height));
    for (std::int64_t y = 0; y < size.height; ++y) {
        const std::vector<std::uint64_t> sums = columnSums(image, y, size.height);
        for (std::int64_t x = 0; x < size.width; ++x) {
            std::uint64_t sum = covered / 2;  // for rounding
            forCovered(
                x, image.size.width, size.width,
                [&](std::size_t column, std::uint64_t share) { sum += share * sums[column]; });
            result.pixels.push_back(static_cast<std::uint8_t>(sum / covered));
        }
    }
    return result;
}

GreyImage adjusted(GreyImage image, int brightness, int contrast) {
    constexpr std::int64_t middle = 128;
    brightness = std::clamp(brightness, 0, 1000);
    contrast = std::clamp(contrast, 0, 1000);
    for (std::uint8_t& pixel : image.pixels) {
        const std::int64_t contrasted = (pixel - middle) * contrast + middle * 100;
        pixel = static_cast<std::uint8_t>(
            std::clamp<std::int64_t>((contrasted * brightness + 5000) / 10000, 0, 255));
    }
    return image;
}
