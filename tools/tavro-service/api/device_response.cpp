#include "api/device_response.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <pugixml.hpp>
#include <sstream>

#include "posix/file_descriptor.h"
#include "posix/system_error.h"
#include "text/text.h"

namespace tavro::service {

namespace {

/// `text` with its special characters as entity references.
std::string withReferences(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        const auto reference = character == '&'   ? "&amp;"
                               : character == '<' ? "&lt;"
                               : character == '>' ? "&gt;"
                                                  : std::string(1, character);
        escaped += reference;
    }
    return escaped;
}

/// `text` as it can stand in one CDATA section that a device takes for one piece. Its reader ends a
/// piece at each "]" there, so the brackets become round ones.
std::string withoutBrackets(std::string text) {
    if (text.find(']') == std::string::npos)
        return text;
    std::replace(text.begin(), text.end(), '[', '(');
    std::replace(text.begin(), text.end(), ']', ')');
    return text;
}

/// Puts `text` into `node` so that it arrives in one piece, for a device keeps only the last: as it
/// stands where that is possible, else as CDATA; or else, if asked for, with entity references,
/// which split it.
void appendText(pugi::xml_node node, const std::string& text, bool entityReferences) {
    const bool special =
        text.find_first_of("&<") != std::string::npos || text.find("]]>") != std::string::npos;
    if (entityReferences)
        node.append_child(pugi::node_pcdata).set_value(withReferences(text).c_str());
    else if (special)
        node.append_child(pugi::node_cdata).set_value(withoutBrackets(text).c_str());
    else
        node.append_child(pugi::node_pcdata).set_value(text.c_str());
}

void append(pugi::xml_node parent, const Element& element, bool entityReferences) {
    pugi::xml_node node = parent.append_child(element.name.c_str());
    for (const Element& child : element.children)
        append(node, child, entityReferences);
    const std::string text = cleanText(element.text);
    if (!text.empty())
        appendText(node, text, entityReferences);
}

}  // namespace

Content contentOf(std::string text) {
    const std::size_t size = text.size();
    return {size, [text = std::move(text)](std::size_t offset, char* buffer, std::size_t capacity) {
                return text.copy(buffer, capacity, offset);
            }};
}

Content contentOfFile(const std::filesystem::path& path) {
    const auto file =
        std::make_shared<const posix::FileDescriptor>(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    if (!*file || ::fstat(file->get(), &status) == -1)
        posix::throwSystemError("cannot read", path);
    return {static_cast<std::size_t>(status.st_size),
            [file](std::size_t offset, char* buffer, std::size_t capacity) {
                const ssize_t got =
                    ::pread(file->get(), buffer, capacity, static_cast<off_t>(offset));
                return static_cast<std::size_t>(got > 0 ? got : 0);
            }};
}

DeviceResponse::DeviceResponse(const Result& result, std::vector<Element> elementsAfterIt)
    : code(result.code),
      status(result.status),
      message(result.message),
      elements(std::move(elementsAfterIt)) {}

Content bodyOf(const DeviceResponse& response, Operation operation, bool entityReferences) {
    if (response.content)
        return *response.content;
    pugi::xml_document document;
    const auto root = document.append_child((std::string(name(operation)) + "Response").c_str());
    append(root, {"Error", response.code}, entityReferences);
    append(root, {"Message", response.message}, entityReferences);
    for (const Element& element : response.elements)
        append(root, element, entityReferences);
    std::ostringstream text;
    // Compact: blanks between the elements would reach the device as text. The texts are escaped.
    document.save(text, "", pugi::format_raw | pugi::format_no_escapes, pugi::encoding_utf8);
    return contentOf(text.str());
}

}  // namespace tavro::service
