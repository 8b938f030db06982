#include "xmlparser.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view item_element = "ItemsResponse";
constexpr std::string_view added_element = "AddedItems";
constexpr std::string_view deleted_element = "DeletedItems";

/// The element of each `BookDescription::Field`.
constexpr std::string_view field_elements[] = {
    "Artist", "CategoryId", "CoverArtImage", "Duration",      "FileType", "ISBN",
    "ISBN13", "ItemID",     "TavroID",       "NumberOfFiles", "Status",   "Title"};
static_assert(std::size(field_elements) == BookDescription::FieldCount);

/// Fewer bytes than most books take in an answer.
constexpr unsigned small_item = 256;

/// So many books find place without the list being copied as it grows.
constexpr unsigned most_expected_items = 16384;

using Book = BookDescription;

/// `field` if `element` is its name, else `FieldCount`.
Book::Field ifCalled(std::string_view element, Book::Field field) {
    return element == field_elements[field] ? field : Book::FieldCount;
}

/// As `fieldOf`, for names of six letters.
Book::Field sixLetterField(std::string_view element) {
    switch (element.back()) {
        case 't':
            return ifCalled(element, Book::Artist);
        case '3':
            return ifCalled(element, Book::ISBN13);
        case 'D':
            return ifCalled(element, Book::ItemID);
        default:
            return ifCalled(element, Book::Status);
    }
}

/// The field that a text of `element` fills; `FieldCount` if it fills none. The length and one
/// letter leave a single name to compare with: a text comes for nearly every element of a book.
Book::Field fieldOf(std::string_view element) {
    switch (element.size()) {
        case 4:
            return ifCalled(element, Book::ISBN);
        case 5:
            return ifCalled(element, Book::Title);
        case 6:
            return sixLetterField(element);
        case 7:
            return ifCalled(element, Book::TavroID);
        case 8:
            return element[0] == 'D' ? ifCalled(element, Book::Duration)
                                     : ifCalled(element, Book::FileType);
        case 10:
            return ifCalled(element, Book::CategoryId);
        case 13:
            return element[0] == 'C' ? ifCalled(element, Book::CoverArtImage)
                                     : ifCalled(element, Book::NumberOfFiles);
        default:
            return Book::FieldCount;
    }
}

/// Adds a piece of text that stands outside the books. Not inlined: with it, the callback would
/// save registers for each piece inside them, too.
[[gnu::noinline]] void addAnswer(std::map<std::string, std::string>& answers,
                                 const std::string& element, const char* text, std::size_t size) {
    answers[element].append(text, size);
}

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
    // Every program built with the class has the member; a text's field is told sooner by fieldOf.
    int field = 0;
    for (const std::string_view element : field_elements)
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
    addedItems.reserve(std::min(length / small_item, most_expected_items));
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
    if (!self.inItemsResponse)
        addAnswer(self.answers, element, text, size);
    else if (const Book::Field field = fieldOf(element); field != Book::FieldCount)
        self.currentItem[field].assign(text, size);
}

int XMLParser::fUnknownEncodingHandler(void* /*user*/, const XML_Char* /*name*/,
                                       XML_Encoding* /*info*/) {
    return 0;
}
