#include "books/book_file.h"

#include <strings.h>

#include <fstream>
#include <system_error>

#include "books/book_error.h"

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
    if (unknown || size > largest_part)
        throw BookError("is too large or cannot be read");
    return readStart(path, static_cast<std::size_t>(size));
}

}  // namespace tavro::service
