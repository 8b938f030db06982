#include "api/answer.h"

#include <sstream>

#include "text/clean_text.h"

namespace tavro::service {

AnswerDocument::AnswerDocument(Operation operation, const Result& result, const std::string& code,
                               AnswerStyle style)
    : style_(style), code_(code.empty() ? result.code : code), status_(result.status) {
    root_ = document_.append_child((std::string(name(operation)) + "Response").c_str());
    add("Error", code_);
    add("Message", result.message);
}

void AnswerDocument::add(pugi::xml_node parent, const char* name, const std::string& text) {
    const std::string clean = cleanText(text);
    pugi::xml_node element = parent.append_child(name);
    if (clean.empty())
        return;
    // A device keeps only the last piece of a text that an entity reference splits.
    const bool needs_escaping = clean.find_first_of("&<>") != std::string::npos;
    const auto type =
        needs_escaping && !style_.entityReferences ? pugi::node_cdata : pugi::node_pcdata;
    element.append_child(type).set_value(clean.c_str());
}

Answer AnswerDocument::finish() const {
    std::ostringstream text;
    // Compact: blanks between the elements would reach the device as text.
    document_.save(text, "", pugi::format_raw, pugi::encoding_utf8);
    return {code_, status_, "text/xml; charset=utf-8", "", contentOf(text.str())};
}

}  // namespace tavro::service
