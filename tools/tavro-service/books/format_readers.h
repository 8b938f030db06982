#pragma once

#include <filesystem>

#include "books/book_details.h"

namespace tavro::service {

// One reader for each format of book. Each takes the path of the file and throws `BookError` if it
// is damaged.

BookDetails readEpub(const std::filesystem::path& path);
BookDetails readFictionBook(const std::filesystem::path& path);
BookDetails readZippedFictionBook(const std::filesystem::path& path);
BookDetails readPdf(const std::filesystem::path& path);
BookDetails readPlainText(const std::filesystem::path& path);

}  // namespace tavro::service
