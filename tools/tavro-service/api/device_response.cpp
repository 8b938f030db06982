#include "api/device_response.h"

#include <pugixml.hpp>
#include <sstream>
#include <utility>

#include "text/clean_text.h"

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
