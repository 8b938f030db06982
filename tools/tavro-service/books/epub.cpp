#include <optional>

#include "books/book_format.h"
#include "books/xml_document.h"
#include "books/zip_archive.h"
#include "text/text.h"

namespace fs = std::filesystem;

namespace tavro::service {

namespace {

std::string percentDecoded(const std::string& text) {
    std::string decoded;
    for (std::size_t place = 0; place < text.size(); ++place) {
        const auto byte = text[place] == '%' ? hexDecode(text.substr(place + 1, 2))
                                             : std::optional<std::string>();
        if (byte && byte->size() == 1) {
            decoded += *byte;
            place += 2;
        } else {
            decoded += text[place];
        }
    }
    return decoded;
}

/// The manifest's item for the cover: marked as such in newer books, named by its id in older ones.
pugi::xml_node coverItem(pugi::xml_node package) {
    std::string id;
    for (const pugi::xml_node meta : findElement(package, "metadata").children()) {
        if (localName(meta.name()) == "meta" && attributeOf(meta, "name") == "cover")
            id = attributeOf(meta, "content");
    }
    for (const pugi::xml_node item : findElement(package, "manifest").children()) {
        const std::string properties = " " + attributeOf(item, "properties") + " ";
        if (properties.find(" cover-image ") != std::string::npos)
            return item;
        if (!id.empty() && attributeOf(item, "id") == id)
            return item;
    }
    return {};
}

void readMetadata(pugi::xml_node metadata, BookDetails& details) {
    for (const pugi::xml_node node : metadata.children()) {
        const std::string_view name = localName(node.name());
        if (name == "title" && details.title.empty()) {
            details.title = textOf(node);
        } else if (name == "creator") {
            addAuthor(details, cleanText(textOf(node)));
        } else if (name == "identifier") {
            const std::string text = textOf(node);
            const std::size_t urn = text.find("urn:isbn:");
            if (urn != std::string::npos)
                setIsbn(details, text.substr(urn + 9));
            else if (attributeOf(node, "scheme") == "ISBN")
                setIsbn(details, text);
        }
    }
}

fs::path packagePath(const ZipArchive& archive) {
    const auto container = parseXml(archive.read("META-INF/container.xml", largest_description));
    return attributeOf(findElement(container.root(), "rootfile"), "full-path");
}

/// The cover of `package`, which lies in `folder` of the archive; empty if it cannot be read, which
/// costs the book its cover only.
std::string coverOf(pugi::xml_node package, const ZipArchive& archive, const fs::path& folder) {
    const std::string reference = percentDecoded(attributeOf(coverItem(package), "href"));
    if (reference.empty())
        return "";
    try {
        return archive.read((folder / reference).lexically_normal().string(), largest_cover);
    } catch (const BookError&) {
        return "";
    }
}

}  // namespace

BookDetails readEpub(const fs::path& path) {
    const ZipArchive archive(path);
    const fs::path packageFile = packagePath(archive);
    const auto document = parseXml(archive.read(packageFile, largest_description));
    const pugi::xml_node package = findElement(document.root(), "package");
    if (!package)
        throw BookError("no package in \"" + packageFile.string() + "\"");
    BookDetails details;
    readMetadata(findElement(package, "metadata"), details);
    details.cover = coverOf(package, archive, packageFile.parent_path());
    return details;
}

}  // namespace tavro::service
