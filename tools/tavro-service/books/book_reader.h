#pragma once

#include <filesystem>
#include <string>

#include "books/book_details.h"

namespace tavro::service {

/// The type of the book file called `path`, which is its extension without the dot and in lower
/// case ("epub", "fb2.zip"); empty if it is no book.
std::string bookFileType(const std::filesystem::path& path);

/// Reads the book `path`, whose extension decides how. Texts come as clean single lines, the cover
/// is JPEG or PNG; a book without a title gets its file's name. Throws `BookError` if it cannot be
/// read.
BookDetails readBook(const std::filesystem::path& path);

}  // namespace tavro::service
