#include "books/book_format.h"
#include "books/xml_document.h"
#include "books/zip_archive.h"
#include "text/text.h"

namespace tavro::service {

namespace {

/// Decodes base64; blanks and anything else outside the alphabet are passed over.
std::string fromBase64(std::string_view text) {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char character : text) {
        const std::size_t value = alphabet.find(character);
        if (value == std::string_view::npos)
            continue;
        bits = (bits << 6 | static_cast<unsigned>(value)) & 0xFFFF;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return bytes;
}

std::string authorName(pugi::xml_node author) {
    std::string name;
    for (const char* const part : {"first-name", "middle-name", "last-name"})
        name += " " + textOf(findElement(author, part));
    name = cleanText(name);
    return name.empty() ? cleanText(textOf(findElement(author, "nickname"))) : name;
}

std::string coverImage(const pugi::xml_document& document, pugi::xml_node titleInfo) {
    const std::string reference =
        attributeOf(findElement(findElement(titleInfo, "coverpage"), "image"), "href");
    if (reference.empty() || reference[0] != '#')
        return "";
    const pugi::xml_node binary = document.find_node([&](pugi::xml_node node) {
        return localName(node.name()) == "binary" && attributeOf(node, "id") == reference.substr(1);
    });
    return fromBase64(textOf(binary));
}

BookDetails detailsOf(std::string bytes) {
    const auto document = parseXml(std::move(bytes));
    const pugi::xml_node information = findElement(document.root(), "title-info");
    if (!information)
        throw BookError("no title-info in the FictionBook");
    BookDetails details;
    details.title = textOf(findElement(information, "book-title"));
    for (const pugi::xml_node node : information.children()) {
        if (localName(node.name()) == "author")
            addAuthor(details, authorName(node));
    }
    setIsbn(details, textOf(findElement(findElement(document.root(), "publish-info"), "isbn")));
    details.cover = coverImage(document, information);
    return details;
}

}  // namespace

BookDetails readFictionBook(const std::filesystem::path& path) {
    return detailsOf(readWhole(path));
}

BookDetails readZippedFictionBook(const std::filesystem::path& path) {
    const ZipArchive archive(path);
    for (const std::string& entry : archive.names()) {
        if (hasExtension(entry, "fb2"))
            return detailsOf(archive.read(entry, largest_book));
    }
    throw BookError("no .fb2 entry in the archive");
}

}  // namespace tavro::service
