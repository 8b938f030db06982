#pragma once

#include <string>
#include <string_view>

namespace posix {

/// What the name of a file begins with that is to replace another one in its folder: hidden, and
/// short enough for every folder. Whoever is killed meanwhile leaves it behind.
inline constexpr std::string_view replacement_prefix = ".replacement-";

// Whoever reads a file that these functions replace, and a device that loses power meanwhile, finds
// the old content or the new one and nothing between. They wait until the new one is on the disk,
// and throw `std::system_error`, with the old content in place and no other file left behind.

/// Makes `content` the whole content of the file `path`. The file keeps its permissions, though not
/// its owner; a new one gets 0600. A symbolic link is replaced, not followed.
void replaceFile(const std::string& path, std::string_view content);

/// Makes the content of the file `source` the whole content of the file `path`, likewise.
void replaceByCopy(const std::string& path, const std::string& source);

}  // namespace posix
