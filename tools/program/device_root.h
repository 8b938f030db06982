#pragma once

#include <string>

namespace tavro::tools {

/// Sees that what chooses the device's root, the environment or the build, names a folder that can
/// be one. Programs ask before the library, which would keep to the configured root instead.
/// Throws UsageError.
void requireDeviceRoot();

/// Makes `folder` the root for this process and the programs that it starts. Nothing may have asked
/// for the root before. Throws UsageError when it cannot be one; `origin` says who named it.
void chooseDeviceRoot(const std::string& folder, const std::string& origin);

}  // namespace tavro::tools
