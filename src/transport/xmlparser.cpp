#include "xmlparser.h"

#include <iterator>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view item_element = "ItemsResponse";
constexpr std::string_view added_element = "AddedItems";
constexpr std::string_view deleted_element = "DeletedItems";

/// The element of each `BookDescription::Field`.
constexpr const char* field_elements[] = {"Artist",   "CategoryId",    "CoverArtImage", "Duration",
                                          "FileType", "ISBN",          "ISBN13",        "ItemID",
                                          "TavroID",  "NumberOfFiles", "Status",        "Title"};
static_assert(std::size(field_elements) == BookDescription::FieldCount);

/// An item whose fields are all empty.
std::vector<std::string> emptyItem() {
    return std::vector<std::string>(BookDescription::FieldCount);
}

/// Moves the item in the making to the end of `items` and leaves it with empty fields.
void storeItem(std::vector<std::string>& item, std::vector<BookDescription>& items) {
    items.emplace_back().data = std::move(item);
    item = emptyItem();
}

}  // namespace

XMLParser::XMLParser() : xmlParser(XML_ParserCreate("utf-8")), currentItem(emptyItem()) {
    int field = 0;
    for (const char* element : field_elements)
        fieldIndex.emplace(element, field++);
}

XMLParser::~XMLParser() {
    XML_ParserFree(xmlParser);
}

void XMLParser::init(const char* encoding) {
    XML_ParserReset(xmlParser, encoding);
    XML_SetUserData(xmlParser, this);
    if (encoding != nullptr)
        XML_SetEncoding(xmlParser, encoding);
    XML_SetElementHandler(xmlParser, &fStartElementHandler, &fEndElementHandler);
    XML_SetCharacterDataHandler(xmlParser, &fCharacterDataHandler);
    XML_SetUnknownEncodingHandler(xmlParser, &fUnknownEncodingHandler, nullptr);
}

bool XMLParser::parse(const char* data, unsigned length) {
    if (xmlParser == nullptr)
        return false;
    answers.clear();
    inItemsResponse = false;
    addedItems.clear();
    deletedItems.clear();
    while (!elementStack.empty())
        elementStack.pop();
    currentItem = emptyItem();
    // Never the final piece: what stands before a cut in the answer is still worth having.
    return XML_Parse(xmlParser, data, static_cast<int>(length), 0) != XML_STATUS_ERROR;
}

void XMLParser::fStartElementHandler(void* user, const XML_Char* name,
                                     const XML_Char** /*attributes*/) {
    if (user == nullptr)
        return;
    auto& self = *static_cast<XMLParser*>(user);
    const std::string_view element = name;
    self.elementStack.emplace(element);
    if (element == item_element)
        self.inItemsResponse = true;
    else if (element == added_element)
        self.inAddedItems = true;
    else if (element == deleted_element)
        self.inDeletedItems = true;
}

void XMLParser::fEndElementHandler(void* user, const XML_Char* /*name*/) {
    if (user == nullptr)
        return;
    auto& self = *static_cast<XMLParser*>(user);
    if (self.elementStack.empty())  // opened before the results were cleared
        return;
    const std::string_view element = self.elementStack.top();
    if (element == item_element) {
        if (self.inAddedItems)
            storeItem(self.currentItem, self.addedItems);
        if (self.inDeletedItems)
            storeItem(self.currentItem, self.deletedItems);
        self.inItemsResponse = false;
    } else if (element == added_element) {
        self.inAddedItems = false;
    } else if (element == deleted_element) {
        self.inDeletedItems = false;
    }
    self.elementStack.pop();
}

void XMLParser::fCharacterDataHandler(void* user, const XML_Char* text, int length) {
    if (user == nullptr)
        return;
    auto& self = *static_cast<XMLParser*>(user);
    if (self.elementStack.empty())
        return;
    const std::string& element = self.elementStack.top();
    const auto size = static_cast<std::size_t>(length);
    if (!self.inItemsResponse) {
        self.answers[element].append(text, size);
        return;
    }
    if (element == item_element)  // the blanks between the fields, half of all pieces
        return;
    if (const auto field = self.fieldIndex.find(element); field != self.fieldIndex.end())
        self.currentItem[static_cast<std::size_t>(field->second)].assign(text, size);
}

int XMLParser::fUnknownEncodingHandler(void* /*user*/, const XML_Char* /*name*/,
                                       XML_Encoding* /*info*/) {
    return 0;
}
