#include "program/device_root.h"

#include <cstdlib>

#include "device_root/device_root.h"
#include "program/failure.h"

namespace tavro::tools {

namespace {

/// `choice` as a root. Throws UsageError when it cannot be one.
std::string acceptedOrThrow(const device_root::Choice& choice) {
    std::string root = device_root::accepted(choice.path);
    if (root.empty())
        throw UsageError("'" + choice.path + "', from " + choice.origin +
                         ", cannot be the folder of a device: log-out gives paths in it to the "
                         "shell as they are, so it must be an absolute path below / of letters, "
                         "digits and " +
                         device_root::plain_punctuation + " only");
    return root;
}

}  // namespace

void requireDeviceRoot() {
    if (!device_root::is_fixed)
        acceptedOrThrow(device_root::firstChoice());
}

void chooseDeviceRoot(const std::string& folder, const std::string& origin) {
    ::setenv(device_root::variable, acceptedOrThrow({folder, origin}).c_str(), 1);
}

}  // namespace tavro::tools
