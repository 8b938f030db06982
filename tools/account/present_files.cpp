#include "account/present_files.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Whether a `PresentFilesStay` lives: `unlink` takes no context, so this has to be global.
bool present_files_stay = false;

}  // namespace

// The announced name is the service's choice and known to the library only, so no file can be put
// aside beforehand. A program's own definition takes the place of the C library's.
extern "C" __attribute__((visibility("default"))) int unlink(const char* path) noexcept {
    return present_files_stay ? 0 : ::unlinkat(AT_FDCWD, path, 0);
}

namespace tavro::tools {

PresentFilesStay::PresentFilesStay() {
    present_files_stay = true;
}

PresentFilesStay::~PresentFilesStay() {
    present_files_stay = false;
}

}  // namespace tavro::tools
