#include "books/book_reader.h"

#include <string_view>

#include "books/book_format.h"
#include "text/text.h"

namespace fs = std::filesystem;

namespace tavro::service {

namespace {

BookDetails readPdf(const fs::path& path) {
    if (readStart(path, 1024).find("%PDF-") == std::string::npos)
        throw BookError("not a PDF document");
    return {};
}

BookDetails readPlainText(const fs::path& path) {
    readStart(path, 1);
    return {};
}

struct BookFormat {
    std::string_view extension;  ///< also the type that a device is told
    BookDetails (*read)(const fs::path& path);
};

constexpr BookFormat book_formats[] = {
    {"epub", readEpub},
    {"fb2", readFictionBook},
    {"fb2.zip", readZippedFictionBook},  // an archive with one such file
    {"pdf", readPdf},
    {"txt", readPlainText},
};

/// The format of the file called `path`; null if it is no book.
const BookFormat* formatOf(const fs::path& path) {
    for (const BookFormat& format : book_formats) {
        if (hasExtension(path.filename().string(), format.extension))
            return &format;
    }
    return nullptr;
}

std::string imageType(std::string_view bytes) {
    if (bytes.substr(0, 3) == "\xFF\xD8\xFF")
        return "image/jpeg";
    if (bytes.substr(0, 8) == "\x89PNG\r\n\x1A\n")
        return "image/png";
    return "";
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
    details.coverType = imageType(details.cover);
    if (details.coverType.empty())
        details.cover.clear();
    return details;
}

}  // namespace tavro::service
