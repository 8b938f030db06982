#pragma once

#include <filesystem>
#include <string>

#include "books/book_reader.h"

namespace tavro::service {

/// Details of the EPUB file `path`. Throws `BookError` if it is damaged.
BookDetails readEpub(const std::filesystem::path& path);

/// Details of the FictionBook whose XML is `bytes`. Throws `BookError` if it is damaged.
BookDetails readFictionBook(std::string bytes);

/// Sets the ISBN field that fits the number of digits in `text`; neither if it is no ISBN.
void setIsbn(BookDetails& details, const std::string& text);

}  // namespace tavro::service
