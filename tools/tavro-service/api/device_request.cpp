#include "api/device_request.h"

#include <expat.h>

#include <memory>
#include <pugixml.hpp>
#include <string_view>
#include <type_traits>
#include <vector>

#include "api/result.h"

namespace tavro::service {

namespace {

constexpr std::string_view device_api_namespace = "http://www.tavro.example/deviceAPI";

struct Element {
    const char* name;
    bool required = true;
};

struct Shape {
    const char* root;
    std::vector<Element> elements;
};

/// What a request of `operation` looks like. The spellings differ from request to request, as
/// devices have always sent them.
const Shape& shapeOf(Operation operation) {
    static const std::map<Operation, Shape> shapes = {
        {Operation::RegisterDevice,
         {"DeviceRequest",
          {{"DeviceId"},
           {"DeviceType"},
           {"ServiceConsumerID"},
           {"ServiceConsumerPassword"},
           {"ShopID", false}}}},
        {Operation::CreateUser,
         {"RegisterUserRequest",
          {{"Email"}, {"FirstName", false}, {"LastName", false}, {"Password"}, {"Token"}}}},
        {Operation::LoginUser,
         {"LoginRequest", {{"EmailID"}, {"Password"}, {"DeviceID"}, {"Token"}}}},
        {Operation::ForgetPassword, {"ForgetPasswordRequest", {{"EmailID"}, {"Token"}}}},
        {Operation::GetShopURL,
         {"ShopInfoRequest",
          {{"DeviceId"}, {"DeviceType"}, {"ServiceConsumerID"}, {"ServiceConsumerPassword"}}}},
        {Operation::SysnWithCloud,
         {"SyncRequest", {{"SessionID"}, {"Token"}, {"LastSynDateTime", false}}}}};
    return shapes.at(operation);
}

[[noreturn]] void refuse(const Result& result) {
    throw Refusal{result};
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
            refuse(result::malformed_request);
        text += part.value();
    }
    return text;
}

}  // namespace

Values readRequest(Operation operation, const std::string& body) {
    // 1. The document and its root.
    const Shape& shape = shapeOf(operation);
    pugi::xml_document document;
    if (!isWellFormed(body) ||
        !document.load_buffer(body.data(), body.size(),
                              pugi::parse_default | pugi::parse_ws_pcdata_single))
        refuse(result::malformed_request);
    const pugi::xml_node root = document.document_element();
    if (root.name() != std::string_view(shape.root) ||
        root.attribute("xmlns").value() != device_api_namespace)
        refuse(result::malformed_request);

    // 2. Its elements, one by one.
    Values values;
    pugi::xml_node node = root.first_child();
    for (const Element& element : shape.elements) {
        if (node.name() != std::string_view(element.name))
            refuse(result::malformed_request);
        values[element.name] = textOnly(node);
        node = node.next_sibling();
    }
    if (node)
        refuse(result::malformed_request);

    // 3. The values that must be there.
    for (const Element& element : shape.elements) {
        if (element.required && values[element.name].empty())
            refuse(result::missing_value);
    }
    return values;
}

}  // namespace tavro::service
