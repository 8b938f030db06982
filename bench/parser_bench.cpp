// A catalogue answer: the library's parser against Expat alone.

#include <memory>

#include "support/bare_expat.h"
#include "support/catalogue_answer.h"
#include "support/require.h"
#include "support/subject.h"
#include "xmlparser.h"

namespace bench {

namespace {

/// The parser, anew for each answer if `isNew`, or else the same, which gives up the books of the
/// answer before.
Action parsing(const std::string& answer, std::int64_t books, bool isNew) {
    const auto parser = std::make_shared<std::unique_ptr<XMLParser>>(new XMLParser);
    const auto ours = [=] {
        XMLParser& used = **parser;
        used.init("utf-8");
        used.parse(answer.data(), static_cast<unsigned>(answer.size()));
        require(static_cast<std::int64_t>(used.addedItems.size()) == books,
                "the answer is read whole");
    };
    return inProcess(ours, [=] {
        if (isNew)
            *parser = std::make_unique<XMLParser>();
    });
}

/// The same by Expat alone.
Action bareParsing(const std::string& answer, bool isNew) {
    const auto expat = std::make_shared<std::unique_ptr<BareExpat>>(new BareExpat);
    return inProcess([=] { (*expat)->parse(answer); },
                     [=] {
                         if (isNew)
                             *expat = std::make_unique<BareExpat>();
                     });
}

/// The benchmark `name`.
Family family(const char* name, bool isNew) {
    const auto make = [isNew](std::int64_t books) {
        const std::string answer = catalogueAnswer(books);
        return Subject{parsing(answer, books, isNew), bareParsing(answer, isNew)};
    };
    return {name, "books", {100, 1000, 10000}, make};
}

}  // namespace

std::vector<Family> parserFamilies() {
    return {family("parse", true), family("parse-again", false)};
}

}  // namespace bench
