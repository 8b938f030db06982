#pragma once

#include <pugixml.hpp>
#include <string>

#include "api/content.h"
#include "api/operation.h"
#include "api/result.h"

namespace tavro::service {

/// What goes back to the device.
struct Answer {
    std::string code;  ///< result code, as it is logged
    int status = 200;
    std::string contentType;
    std::string fileName;  ///< announced in a header line of its own unless empty
    Content content;
};

/// How answers are written.
struct AnswerStyle {
    bool entityReferences = false;  ///< escape texts with entity references, not with CDATA
};

/// An XML answer in the making: the result first, then whatever is added.
class AnswerDocument {
public:
    /// An answer to `operation` that says `result`, or the code `code` in its place unless empty.
    AnswerDocument(Operation operation, const Result& result, const std::string& code,
                   AnswerStyle style);

    /// Adds the element `name` with `text` to the answer.
    void add(const char* name, const std::string& text) { add(root_, name, text); }

    /// Adds the element `name` with `text` to `parent`, an element of this answer.
    void add(pugi::xml_node parent, const char* name, const std::string& text);

    /// Adds the empty element `name` to the answer, for more to be added to it.
    pugi::xml_node addList(const char* name) { return root_.append_child(name); }

    /// The finished answer.
    Answer finish() const;

private:
    pugi::xml_document document_;
    pugi::xml_node root_;
    AnswerStyle style_;
    std::string code_;
    int status_;
};

}  // namespace tavro::service
