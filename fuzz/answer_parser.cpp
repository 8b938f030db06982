/// The parser of the service's answers. Promises: every record has twelve fields; a document that
/// is cut anywhere yields the first of the books that the whole one yields; the parser of one
/// document serves the next.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <string>

#include "require.h"
#include "xmlparser.h"

namespace {

using Books = std::vector<BookDescription>;

bool parse(XMLParser& parser, const std::string& document, const char* encoding) {
    parser.init(encoding);
    return parser.parse(document.data(), static_cast<unsigned>(document.size()));
}

void requireWholeRecords(const Books& books) {
    for (const BookDescription& book : books)
        require(book.data.size() == BookDescription::FieldCount, "a record has twelve fields");
}

void requireBeginning(const Books& some, const Books& all) {
    require(some.size() <= all.size() && std::equal(some.begin(), some.end(), all.begin(),
                                                    [](const auto& one, const auto& other) {
                                                        return one.data == other.data;
                                                    }),
            "a cut document yields the first books of the whole one");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const char* const encoding = input.ConsumeBool() ? "utf-8" : nullptr;
    const auto cut = input.ConsumeIntegral<std::uint16_t>();
    const std::string document = input.ConsumeRemainingBytesAsString();

    XMLParser whole;
    parse(whole, document, encoding);
    requireWholeRecords(whole.addedItems);
    requireWholeRecords(whole.deletedItems);

    XMLParser beginning;
    parse(beginning, document.substr(0, cut), encoding);
    requireBeginning(beginning.addedItems, whole.addedItems);
    requireBeginning(beginning.deletedItems, whole.deletedItems);

    const std::string next = "<R><Error>1003</Error></R>";
    require(parse(beginning, next, "utf-8") && beginning.answers.size() == 1 &&
                beginning.answers["Error"] == "1003" && beginning.addedItems.empty(),
            "a parser reads the next document whatever the last one was");
    return 0;
}
