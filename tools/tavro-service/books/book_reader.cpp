#include "books/book_reader.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <system_error>

#include "books/book_formats.h"
#include "books/zip_archive.h"
#include "text/clean_text.h"

namespace fs = std::filesystem;

namespace tavro::service {

namespace {

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() > end.size() && text.substr(text.size() - end.size()) == end;
}

std::string lowerCase(std::string text) {
    for (char& character : text)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    return text;
}

/// The first bytes of the file `path`, at most `limit`.
std::string readStart(const fs::path& path, std::size_t limit) {
    std::ifstream stream(path, std::ios::binary);
    std::string bytes(limit, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(limit));
    if (!stream && !stream.eof())
        throw BookError("cannot be opened");
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

BookDetails readPlainFictionBook(const fs::path& path) {
    std::error_code unknown;
    const auto size = fs::file_size(path, unknown);
    if (unknown || size > largest_part)
        throw BookError("is too large or cannot be read");
    return readFictionBook(readStart(path, static_cast<std::size_t>(size)));
}

BookDetails readZippedFictionBook(const fs::path& path) {
    const ZipArchive archive(path);
    for (const std::string& entry : archive.names()) {
        if (endsWith(lowerCase(entry), ".fb2"))
            return readFictionBook(archive.read(entry));
    }
    throw BookError("no .fb2 entry in the archive");
}

BookDetails readPdf(const fs::path& path) {
    if (readStart(path, 1024).find("%PDF-") == std::string::npos)
        throw BookError("not a PDF document");
    return {};
}

BookDetails readText(const fs::path& path) {
    readStart(path, 1);
    return {};
}

}  // namespace

std::string bookFileType(const fs::path& path) {
    const std::string file = lowerCase(path.filename());
    for (const char* const type : {"epub", "fb2.zip", "fb2", "pdf", "txt"}) {
        if (endsWith(file, "." + std::string(type)))
            return type;
    }
    return "";
}

BookDetails readBook(const fs::path& path) {
    const std::string type = bookFileType(path);
    BookDetails details = type == "epub"      ? readEpub(path)
                          : type == "fb2"     ? readPlainFictionBook(path)
                          : type == "fb2.zip" ? readZippedFictionBook(path)
                          : type == "pdf"     ? readPdf(path)
                                              : readText(path);
    details.title = cleanText(details.title);
    details.artist = cleanText(details.artist);
    if (details.title.empty()) {
        const std::string file = path.filename();
        details.title = cleanText(file.substr(0, file.size() - type.size() - 1));
    }
    if (imageType(details.cover).empty())
        details.cover.clear();
    return details;
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

std::string imageType(std::string_view bytes) {
    if (bytes.substr(0, 3) == "\xFF\xD8\xFF")
        return "image/jpeg";
    if (bytes.substr(0, 8) == "\x89PNG\r\n\x1A\n")
        return "image/png";
    return "";
}

}  // namespace tavro::service
