#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace tavro::service {

/// What a book file says of itself; empty where the book is silent.
struct BookDetails {
    std::string title;
    std::string artist;
    std::string isbn;
    std::string isbn13;
    std::string cover;      ///< bytes of an image
    std::string coverType;  ///< its media type
};

/// Thrown when a book cannot be read; `what` says why.
class BookError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The type of the book file called `path`, which is its extension without the dot and in lower
/// case ("epub", "fb2.zip"); empty if it is no book.
std::string bookFileType(const std::filesystem::path& path);

/// Reads the book `path`, whose extension decides how. Texts come as clean single lines, the cover
/// is JPEG or PNG; a book without a title gets its file's name. Throws `BookError` if it cannot be
/// read.
BookDetails readBook(const std::filesystem::path& path);

}  // namespace tavro::service
