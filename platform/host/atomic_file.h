#pragma once

#include <filesystem>
#include <string_view>

/// Makes `content` the whole content of the file `path`, so that other processes, and a device that
/// loses power, see the old or the new content and nothing between. The file keeps its permissions;
/// a new one gets 0600. Waits until the content is on the disk.
/// @return false when that failed: the old file is as it was and no other file is left behind.
bool replaceFile(const std::filesystem::path& path, std::string_view content);
