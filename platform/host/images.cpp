// LoadJPEG, LoadPNGStretch and LoadBitmap.

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <string>

#include "file_access.h"
#include "guarded.h"
#include "image_decoders.h"
#include "lectern_host.h"
#include "posix/file_status.h"

namespace {

/// The whole content of the file `path`; nothing, with `errno` set, when it cannot be read or is
/// larger than any picture that a decoder takes on.
std::optional<std::string> contentOf(const char* path) {
    constexpr off_t largest_file = 160'000'000;
    const posix::FileDescriptor file = openRegularFile(path);
    if (!file)
        return std::nullopt;
    const std::optional<posix::FileStatus> status = posix::statusOf(file.get());
    if (!status)
        return std::nullopt;
    if (status->size > largest_file) {
        errno = EFBIG;
        return std::nullopt;
    }
    return readAll(file);
}

LecternBitmap* toBitmap(const GreyImage& image) {
    void* const block = std::malloc(sizeof(LecternBitmap) + image.pixels.size());
    if (block == nullptr)
        return nullptr;
    const auto width = static_cast<unsigned short>(image.size.width);
    const auto height = static_cast<unsigned short>(image.size.height);
    auto* const bitmap = new (block) LecternBitmap{width, height, 8, width};
    std::copy(image.pixels.begin(), image.pixels.end(), LecternBitmapPixels(bitmap));
    return bitmap;
}

/// The bitmap that `finish` makes of what `decode` makes of the content of `path`; null, with
/// `errno` set, when that is no such picture.
template <typename Finish>
LecternBitmap* load(const char* path, std::optional<GreyImage> (*decode)(std::string_view),
                    Finish finish) {
    return guarded<LecternBitmap*>(nullptr, [&]() -> LecternBitmap* {
        const std::optional<std::string> content = contentOf(path);
        if (!content)
            return nullptr;
        const std::optional<GreyImage> image = decode(*content);
        if (image)
            return toBitmap(finish(*image));
        errno = EBADMSG;
        return nullptr;
    });
}

/// Whether a call makes sense; sets `errno` when it does not.
bool isCallable(const char* path, ImageSize size) {
    constexpr std::int64_t longest_side = 8192;
    if (path != nullptr && size.width > 0 && size.width <= longest_side && size.height > 0 &&
        size.height <= longest_side)
        return true;
    errno = EINVAL;
    return false;
}

}  // namespace

LecternBitmap* LoadJPEG(const char* path, int width, int height, int brightness, int contrast,
                        int proportional) {
    const ImageSize frame{width, height};
    if (!isCallable(path, frame))
        return nullptr;
    return load(path, decodeJpeg, [=](const GreyImage& image) {
        const ImageSize size = proportional == 0 ? frame : fitted(image.size, frame);
        return adjusted(scaled(image, size), brightness, contrast);
    });
}

LecternBitmap* LoadPNGStretch(const char* path, int width, int height, int /*proportional*/,
                              int /*dither*/) {
    const ImageSize size{width, height};
    if (!isCallable(path, size))
        return nullptr;
    return load(path, decodePng, [size](const GreyImage& image) { return scaled(image, size); });
}

LecternBitmap* LoadBitmap(const char* path) {
    if (!isCallable(path, {1, 1}))
        return nullptr;
    return load(path, decodeBmp, [](const GreyImage& image) { return image; });
}
