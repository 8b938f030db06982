#include "account/present_files.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Whether a `PresentFilesStay` lives: `unlink` takes no context, so this has to be global.
bool presentFilesStay = false;

}  // namespace

// The announced name is the service's choice and known to the library only, so no file can be put
// aside beforehand. A program's own definition takes the place of the C library's.
extern "C" __attribute__((visibility("default"))) int unlink(const char* path) noexcept {
    return presentFilesStay ? 0 : ::unlinkat(AT_FDCWD, path, 0);
}

namespace tavro::tools {

PresentFilesStay::PresentFilesStay() {
    presentFilesStay = true;
}

PresentFilesStay::~PresentFilesStay() {
    presentFilesStay = false;
}

}  // namespace tavro::tools
