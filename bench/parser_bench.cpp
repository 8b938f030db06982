// A catalogue answer: the library's parser against Expat alone.

#include <memory>

#include "support/bare_expat.h"
#include "support/catalogue_answer.h"
#include "support/require.h"
#include "support/subject.h"
#include "xmlparser.h"

namespace bench {

std::vector<Family> parserFamilies() {
    const auto make = [](std::int64_t books) {
        const auto answer = std::make_shared<const std::string>(catalogueAnswer(books));
        const auto parser = std::make_shared<XMLParser>();
        const auto expat = std::make_shared<const BareExpat>();
        const auto ours = [=] {
            parser->init("utf-8");
            parser->parse(answer->data(), static_cast<unsigned>(answer->size()));
            require(static_cast<std::int64_t>(parser->addedItems.size()) == books,
                    "the answer is read whole");
        };
        return Subject{inProcess(ours), inProcess([=] { expat->parse(*answer); })};
    };
    return {{"parse", "books", {100, 1000, 10000}, make}};
}

}  // namespace bench
