#include "books/book_reader.h"

#include <string_view>

#include "books/book_error.h"
#include "books/format_readers.h"
#include "books/image_type.h"
#include "text/clean_text.h"
#include "text/extension.h"

namespace fs = std::filesystem;

namespace tavro::service {

namespace {

struct BookFormat {
    std::string_view extension;  ///< also the type that a device is told
    BookDetails (*read)(const fs::path& path);
};

/// Every format of book.
constexpr BookFormat book_formats[] = {
    {"epub", readEpub}, {"fb2", readFictionBook}, {"fb2.zip", readZippedFictionBook},
    {"pdf", readPdf},   {"txt", readPlainText},
};

/// The format of the file called `path`; null if it is no book.
const BookFormat* formatOf(const fs::path& path) {
    for (const BookFormat& format : book_formats) {
        if (hasExtension(path.filename().string(), format.extension))
            return &format;
    }
    return nullptr;
}

}  // namespace

std::string bookFileType(const fs::path& path) {
    const BookFormat* const format = formatOf(path);
    return format ? std::string(format->extension) : "";
}

BookDetails readBook(const fs::path& path) {
    const BookFormat* const format = formatOf(path);
    if (format == nullptr)
        throw BookError("no format of book");
    BookDetails details = format->read(path);
    details.title = cleanText(details.title);
    details.artist = cleanText(details.artist);
    if (details.title.empty()) {
        const std::string file = path.filename();
        details.title = cleanText(file.substr(0, file.size() - format->extension.size() - 1));
    }
    if (imageType(details.cover).empty())
        details.cover.clear();
    return details;
}

}  // namespace tavro::service
