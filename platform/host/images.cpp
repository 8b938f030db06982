// Image loaders. None decodes yet: a call for a readable file fails with ENOSYS.

#include <cerrno>

#include "file_access.h"
#include "lectern.h"

namespace {

LecternBitmap* refuse(const char* path, bool sizeGiven) {
    if (path == nullptr || !sizeGiven)
        errno = EINVAL;
    else if (openRegularFile(path))
        errno = ENOSYS;
    return nullptr;
}

}  // namespace

LecternBitmap* LoadJPEG(const char* path, int width, int height, int /*brightness*/,
                        int /*contrast*/, int /*proportional*/) {
    return refuse(path, width > 0 && height > 0);
}

LecternBitmap* LoadPNGStretch(const char* path, int width, int height, int /*proportional*/,
                              int /*dither*/) {
    return refuse(path, width > 0 && height > 0);
}

LecternBitmap* LoadBitmap(const char* path) {
    return refuse(path, true);
}
