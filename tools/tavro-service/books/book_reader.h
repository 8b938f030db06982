#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tavro::service {

/// Thrown when a book cannot be read; `what` says why.
class BookError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a book file says of itself. Texts are clean single lines, empty where the book is silent.
struct BookDetails {
    std::string title;
    std::string artist;
    std::string isbn;
    std::string isbn13;
    std::string cover;  ///< bytes of a JPEG or PNG image
};

/// The type of the book file called `path` by its extension: "epub", "fb2", "fb2.zip", "pdf" or
/// "txt"; empty if it is no book.
std::string bookFileType(const std::filesystem::path& path);

/// Reads the book `path`, whose extension decides how; a book without a title gets its file's name.
/// Throws `BookError` if it cannot be read.
BookDetails readBook(const std::filesystem::path& path);

/// Media type of the image `bytes`: JPEG or PNG; empty if it is neither.
std::string imageType(std::string_view bytes);

}  // namespace tavro::service
