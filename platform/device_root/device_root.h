/// The folder that stands for "/" of a device. On a device it is that; on a desktop it is chosen
/// when a program runs.
#pragma once

#include <string>

#include "device_root/configured_root.h"

namespace device_root {

/// Environment variable that names the root on a desktop.
inline constexpr char variable[] = "TAVRO_DEVICE_ROOT";

/// Whether the paths are the device's own, whatever the environment says.
inline constexpr bool is_fixed = configured[0] == '\0';

/// Whether a shell takes `text` as one word that means itself.
bool isPlainWord(const std::string& text);

/// `path` as a root, without a trailing "/". Empty when it can be none: log-out gives paths below
/// it to the shell as they are, so it must be absolute, plain, and not "/" itself.
std::string accepted(std::string path);

/// The root, without a trailing "/": the first time that a process asks, the environment's choice,
/// or the configured one where that is missing or refused; the same ever after. A desktop without
/// a home folder that can hold one gets a root that does not exist.
const std::string& root();

/// What somebody wants to be the root, and who: a variable, the build.
struct Choice {
    std::string path;
    std::string origin;
};

/// What the environment says now, or else the build.
Choice firstChoice();

}  // namespace device_root
