#include "books/xml_document.h"

#include <iconv.h>
#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <memory>

#include "books/book_reader.h"

namespace tavro::service {

namespace {

/// The encoding that an XML declaration at the start of `bytes` names; empty if it names none.
std::string declaredEncoding(std::string_view bytes) {
    std::string_view declaration = bytes.substr(0, bytes.find("?>"));
    if (declaration.substr(0, 5) != "<?xml")
        return "";
    const std::size_t key = declaration.find("encoding");
    const std::size_t begin = declaration.find_first_of("\"'", key);
    if (key == std::string_view::npos || begin == std::string_view::npos)
        return "";
    const std::size_t end = declaration.find(declaration[begin], begin + 1);
    return std::string(declaration.substr(begin + 1, end - begin - 1));
}

/// `bytes` in UTF-8; every byte that `encoding` does not know becomes a question mark.
std::string toUtf8(std::string bytes, const std::string& encoding) {
    const auto close = [](void* converter) { ::iconv_close(converter); };
    const iconv_t opened = ::iconv_open("UTF-8", encoding.c_str());
    if (reinterpret_cast<std::intptr_t>(opened) == -1)
        throw BookError("unknown encoding \"" + encoding + "\"");
    const std::unique_ptr<void, decltype(close)> converter(opened, close);

    std::string converted;
    char* input = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
        char buffer[4096];
        char* output = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t done = ::iconv(converter.get(), &input, &left, &output, &room);
        const bool unknownByte = done == static_cast<std::size_t>(-1) && errno != E2BIG;
        converted.append(buffer, output);
        if (unknownByte) {
            converted += '?';
            ++input;
            --left;
        }
    }
    return converted;
}

class TextCollector : public pugi::xml_tree_walker {
public:
    bool for_each(pugi::xml_node& node) override {
        if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata)
            text += node.value();
        return true;
    }

    std::string text;
};

/// Throws `BookError` if `bytes` may have so many elements and attributes, each of which takes up
/// to twenty times its bytes in memory, that it is made for that rather than to be read.
void checkSize(const std::string& bytes) {
    constexpr std::ptrdiff_t most_nodes = 2'000'000;
    const auto nodes = std::count_if(bytes.begin(), bytes.end(), [](char character) {
        return character == '<' || character == '=';
    });
    if (nodes > most_nodes)
        throw BookError("has too many elements");
}

}  // namespace

pugi::xml_document parseXml(std::string bytes) {
    const std::string encoding = declaredEncoding(bytes);
    const bool knownToParser = encoding.empty() || ::strcasecmp(encoding.c_str(), "utf-8") == 0;
    if (!knownToParser)
        bytes = toUtf8(std::move(bytes), encoding);

    checkSize(bytes);
    pugi::xml_document document;
    const pugi::xml_parse_result parsed =
        document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default,
                             knownToParser ? pugi::encoding_auto : pugi::encoding_utf8);
    if (!parsed)
        throw BookError(std::string("not well-formed XML: ") + parsed.description());
    return document;
}

std::string_view localName(std::string_view qualifiedName) {
    return qualifiedName.substr(qualifiedName.rfind(':') + 1);
}

pugi::xml_node findElement(pugi::xml_node node, std::string_view name) {
    return node.find_node([name](pugi::xml_node candidate) {
        return candidate.type() == pugi::node_element && localName(candidate.name()) == name;
    });
}

std::string attributeOf(pugi::xml_node node, std::string_view name) {
    for (const pugi::xml_attribute attribute : node.attributes()) {
        if (localName(attribute.name()) == name)
            return attribute.value();
    }
    return "";
}

std::string textOf(pugi::xml_node node) {
    TextCollector collector;
    node.traverse(collector);
    return collector.text;
}

}  // namespace tavro::service
