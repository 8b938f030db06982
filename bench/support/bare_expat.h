#pragma once

#include <expat.h>

#include <memory>
#include <stdexcept>
#include <string_view>

namespace bench {

/// Expat with empty handlers: what a parser of answers cannot beat.
class BareExpat {
public:
    /// Reads `answer` and keeps nothing. Throws when it is not well-formed.
    void parse(std::string_view answer) const {
        XML_Parser parser = parser_.get();
        XML_ParserReset(parser, "utf-8");
        XML_SetElementHandler(
            parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
        XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
        if (XML_Parse(parser, answer.data(), static_cast<int>(answer.size()), 0) ==
            XML_STATUS_ERROR)
            throw std::runtime_error("Expat refuses the answer");
    }

private:
    struct Free {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };
    const std::unique_ptr<XML_ParserStruct, Free> parser_{XML_ParserCreate("utf-8")};
};

}  // namespace bench
