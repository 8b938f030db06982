#pragma once

#include <lectern_host.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "console/output.h"

namespace tavro::tools {

/// Releases a bitmap of the platform.
struct BitmapDeleter {
    void operator()(LecternBitmap* bitmap) const { std::free(bitmap); }
};

/// A bitmap that the platform loaded, 8-bit grey; null when there is none.
using Bitmap = std::unique_ptr<LecternBitmap, BitmapDeleter>;

/// `bitmap` as the content of a PNG file of the same size, 8-bit grey. Throws Failure.
std::string asPng(LecternBitmap& bitmap);

/// `bitmap` as lines of characters that fit into `room` (at least 1x1), one for each row of cells
/// twice as high as wide, in proportion: the denser a character the lighter the picture.
std::vector<std::string> asCharacters(LecternBitmap& bitmap, Window room);

}  // namespace tavro::tools
