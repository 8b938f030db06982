#include "api/device_response.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <pugixml.hpp>
#include <sstream>

#include "posix/file_descriptor.h"
#include "posix/system_error.h"
#include "text/text.h"

namespace tavro::service {

namespace {

void append(pugi::xml_node parent, const Element& element, bool entityReferences) {
    pugi::xml_node node = parent.append_child(element.name.c_str());
    for (const Element& child : element.children)
        append(node, child, entityReferences);
    const std::string text = cleanText(element.text);
    if (text.empty())
        return;
    // A device keeps only the last piece of a text that an entity reference splits.
    const bool escaped = text.find_first_of("&<>") != std::string::npos;
    const auto type = escaped && !entityReferences ? pugi::node_cdata : pugi::node_pcdata;
    node.append_child(type).set_value(text.c_str());
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
    // Compact: blanks between the elements would reach the device as text.
    document.save(text, "", pugi::format_raw, pugi::encoding_utf8);
    return contentOf(text.str());
}

}  // namespace tavro::service
