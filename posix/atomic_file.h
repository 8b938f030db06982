#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace posix {

/// What the name of a file begins with that is to replace another one in its folder: hidden, and
/// short enough for every folder. Whoever is killed meanwhile leaves it behind.
inline constexpr std::string_view replacement_prefix = ".replacement-";

// Whoever reads a file that these functions replace, and a device that loses power meanwhile, finds
// the old content or the new one and nothing between. They wait until the new one is on the disk,
// and throw `std::system_error`, with the old content in place and no other file left behind.

/// Makes `content` the whole content of the file `path`, which then has the permissions `mode` and
/// belongs to this process's user. A symbolic link is replaced, not followed.
void replaceFile(const std::string& path, std::string_view content, mode_t mode = 0600);

/// Makes the file `path` a copy of the file `source`, with its permissions.
void replaceByCopy(const std::string& path, const std::string& source);

/// Removes from `folder` what killed writers have left behind of files that were to replace others.
/// What is being written stays. A folder that cannot be read is passed over.
void removeAbandonedReplacements(const std::string& folder);

/// The permissions of the file `path`; `otherwise` when there is none.
mode_t modeOf(const std::string& path, mode_t otherwise);

}  // namespace posix
