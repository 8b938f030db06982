#pragma once

namespace tavro::tools {

/// Makes the device's root, for its owner only, and in it links to the applications that belong to
/// this program, so that the library finds them. An application that is no link stays. Nothing on
/// a device, which has its own.
void makeDevice();

/// Sees that the application `path` of the device can be started. Throws Failure.
void requireApplication(const char* path);

}  // namespace tavro::tools
