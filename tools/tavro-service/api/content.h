#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>

namespace tavro::service {

/// Bytes of an answer, taken piece by piece from wherever they lie.
struct Content {
    std::size_t size = 0;

    /// Puts up to `capacity` bytes from `offset` into `buffer`; how many, 0 at the end or when the
    /// bytes cannot be read any more.
    std::function<std::size_t(std::size_t offset, char* buffer, std::size_t capacity)> read;
};

/// The bytes of `text`.
Content contentOf(std::string text);

/// The bytes of the file `path` as it is now: it is kept open, so that replacing it meanwhile does
/// no harm. Throws `std::system_error` if it cannot be opened.
Content contentOfFile(const std::filesystem::path& path);

}  // namespace tavro::service
