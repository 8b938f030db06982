#pragma once

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

/// Sets the ISBN field that fits the number of digits in `text`; neither if it is no ISBN.
void setIsbn(BookDetails& details, const std::string& text);

}  // namespace tavro::service
