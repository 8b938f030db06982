#include "account/present_files.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Whether a `PresentFilesStay` lives: `unlink` takes no context, so this has to be global.
bool presentFilesStay = false;
std::string sparedFile;

}  // namespace

// The announced name is the service's choice and known to the library only, so no file can be put
// aside beforehand. A program's own definition takes the place of the C library's.
extern "C" __attribute__((visibility("default"))) int unlink(const char* path) noexcept {
    if (!presentFilesStay)
        return ::unlinkat(AT_FDCWD, path, 0);
    sparedFile = path;
    return 0;
}

namespace tavro::tools {

PresentFilesStay::PresentFilesStay() {
    presentFilesStay = true;
    sparedFile.clear();
}

PresentFilesStay::~PresentFilesStay() {
    presentFilesStay = false;
}

std::string PresentFilesStay::spared() {
    return sparedFile;
}

}  // namespace tavro::tools
