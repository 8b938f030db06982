#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "books/book_reader.h"

namespace tavro::service {

// One reader for each format of book. Each takes the path of the file and throws `BookError` if it
// is damaged.

BookDetails readEpub(const std::filesystem::path& path);
BookDetails readFictionBook(const std::filesystem::path& path);
BookDetails readZippedFictionBook(const std::filesystem::path& path);

// What they are made of.

/// Largest book that is read as a whole, description of a book in an archive, and cover, in bytes.
inline constexpr std::size_t largest_book = 64u << 20;
inline constexpr std::size_t largest_description = 4u << 20;
inline constexpr std::size_t largest_cover = 16u << 20;

/// Whether the file name `name` has the extension `extension` ("fb2.zip") in whatever letter case,
/// and something before it.
bool hasExtension(std::string_view name, std::string_view extension);

/// The first bytes of the file `path`, at most `limit`. Throws `BookError`.
std::string readStart(const std::filesystem::path& path, std::size_t limit);

/// All bytes of the file `path`. Throws `BookError`, also if there are more than `largest_book`.
std::string readWhole(const std::filesystem::path& path);

/// Puts the author `name` behind those whom `details` names; nobody if it is empty.
void addAuthor(BookDetails& details, const std::string& name);

/// Sets the ISBN field that fits the number of digits in `text`; neither if it is no ISBN.
void setIsbn(BookDetails& details, const std::string& text);

}  // namespace tavro::service
