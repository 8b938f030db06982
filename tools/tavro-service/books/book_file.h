#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace tavro::service {

/// Largest file or archive entry that is read for the sake of a title or a cover, in bytes.
inline constexpr std::size_t largest_part = 64u << 20;

/// Whether the file name `name` has the extension `extension` ("fb2.zip") in whatever letter case,
/// and something before it.
bool hasExtension(std::string_view name, std::string_view extension);

/// The first bytes of the file `path`, at most `limit`. Throws `BookError`.
std::string readStart(const std::filesystem::path& path, std::size_t limit);

/// All bytes of the file `path`. Throws `BookError`, also if there are more than `largest_part`.
std::string readWhole(const std::filesystem::path& path);

}  // namespace tavro::service
