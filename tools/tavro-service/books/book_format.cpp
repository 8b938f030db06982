#include "books/book_format.h"

#include <strings.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tavro::service {

bool hasExtension(std::string_view name, std::string_view extension) {
    if (name.size() < extension.size() + 2 || name[name.size() - extension.size() - 1] != '.')
        return false;
    const std::string_view end = name.substr(name.size() - extension.size());
    return ::strncasecmp(end.data(), extension.data(), extension.size()) == 0;
}

std::string readStart(const std::filesystem::path& path, std::size_t limit) {
    std::ifstream stream(path, std::ios::binary);
    std::string bytes(limit, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(limit));
    if (!stream && !stream.eof())
        throw BookError("cannot be opened");
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

std::string readWhole(const std::filesystem::path& path) {
    std::error_code unknown;
    const auto size = std::filesystem::file_size(path, unknown);
    if (unknown || size > largest_book)
        throw BookError("is too large or cannot be read");
    return readStart(path, static_cast<std::size_t>(size));
}

void addAuthor(BookDetails& details, const std::string& name) {
    if (!name.empty())
        details.artist += (details.artist.empty() ? "" : ", ") + name;
}

void setIsbn(BookDetails& details, const std::string& text) {
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
                 [](char character) { return character != '-' && character != ' '; });
    const std::size_t number = std::min(digits.find_first_not_of("0123456789"), digits.size());
    if (digits.size() == 13 && number == 13)
        details.isbn13 = digits;
    else if (digits.size() == 10 && (number == 10 || (number == 9 && digits.back() == 'X')))
        details.isbn = digits;
}

}  // namespace tavro::service
