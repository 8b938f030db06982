#include "api/device_request.h"

#include <expat.h>

#include <memory>
#include <pugixml.hpp>
#include <type_traits>

#include "api/result.h"

namespace tavro::service {

namespace {

constexpr std::string_view device_api_namespace = "http://www.tavro.example/deviceAPI";

[[noreturn]] void refuseMalformed() {
    throw RequestError(result::malformed_request);
}

/// Whether `body` is well-formed to the letter; the parser that reads its elements is more lenient.
bool isWellFormed(const std::string& body) {
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), &XML_ParserFree);
    const auto size = static_cast<int>(body.size());
    return parser && XML_Parse(parser.get(), body.data(), size, XML_TRUE) == XML_STATUS_OK;
}

/// Text of `element`, which must hold nothing else.
std::string textOnly(pugi::xml_node element) {
    std::string text;
    for (const pugi::xml_node part : element.children()) {
        if (part.type() != pugi::node_pcdata && part.type() != pugi::node_cdata)
            refuseMalformed();
        text += part.value();
    }
    return text;
}

pugi::xml_node parseRoot(const std::string& body, const char* name, pugi::xml_document& document) {
    constexpr unsigned options = pugi::parse_default | pugi::parse_ws_pcdata_single;
    if (!isWellFormed(body) || !document.load_buffer(body.data(), body.size(), options))
        refuseMalformed();
    const pugi::xml_node root = document.document_element();
    if (root.name() != std::string_view(name) ||
        root.attribute("xmlns").value() != device_api_namespace)
        refuseMalformed();
    return root;
}

Values readXml(const OperationDescription& operation, const std::string& body) {
    pugi::xml_document document;
    pugi::xml_node node = parseRoot(body, operation.root, document).first_child();
    Values values;
    for (const RequestField& field : operation.fields) {
        if (node.name() != std::string_view(field.name))
            refuseMalformed();
        values[field.name] = textOnly(node);
        node = node.next_sibling();
    }
    if (node)
        refuseMalformed();
    return values;
}

/// The first value of each field, empty if there is none.
Values readForm(const OperationDescription& operation, const Form& form) {
    Values values;
    for (const auto& [name, value] : form.fields)
        values.emplace(name, value);
    for (const RequestField& field : operation.fields)
        values[field.name];
    return values;
}

}  // namespace

Values readValues(const DeviceRequest& request) {
    const OperationDescription& operation = descriptionOf(request.operation);
    Values values =
        operation.isForm() ? readForm(operation, request.form) : readXml(operation, request.body);
    for (const RequestField& field : operation.fields) {
        if (field.required && values[field.name].empty())
            throw RequestError(result::missing_value);
    }
    return values;
}

}  // namespace tavro::service
