#pragma once

#include <expat.h>

#include <map>
#include <stack>
#include <string>
#include <vector>

#include "bookdescription.h"

/// Reads one answer of the service into a map of texts by element name and two lists of books.
///
/// One object serves many documents: `init`, then `parse`, for each. The results stay until the
/// next `parse`. Used by one thread at a time; it takes no lock and never blocks.
class [[gnu::visibility("default")]] XMLParser {
public:
    /// Makes a parser without results.
    XMLParser();

    /// Frees the parser and its results.
    ~XMLParser();
    XMLParser(const XMLParser&) = delete;
    XMLParser& operator=(const XMLParser&) = delete;

    /// Makes the parser ready for a new document.
    ///
    /// @param encoding the encoding to read the document in ("utf-8" for the service), which wins
    ///     over the one that the document declares; null leaves it to the document.
    void init(const char* encoding);

    /// Reads a document. Its end is never demanded: a document cut short between two elements is
    /// read without complaint, so that every complete book before the cut is kept.
    ///
    /// @param data the document, which need not be zero-terminated and is not kept.
    /// @param length of the document in bytes.
    /// @return false when the document is not well-formed; what was read before the error stays.
    bool parse(const char* data, unsigned length);

    /// Expat's callback: notes that an element has opened.
    ///
    /// @param user the parser object; a call without one is ignored.
    /// @param name of the element.
    /// @param attributes not used.
    static void fStartElementHandler(void* user, const XML_Char* name, const XML_Char** attributes);

    /// Expat's callback: closes the innermost open element and stores the book that it completes.
    ///
    /// @param user the parser object; a call without one is ignored.
    /// @param name not used: the innermost open element is known.
    static void fEndElementHandler(void* user, const XML_Char* name);

    /// Expat's callback: takes a piece of text of the innermost open element. Inside a book a field
    /// keeps only its last piece; elsewhere the pieces add up.
    ///
    /// @param user the parser object; a call without one is ignored.
    /// @param text UTF-8, not zero-terminated.
    /// @param length of the text in bytes.
    static void fCharacterDataHandler(void* user, const XML_Char* text, int length);

    /// Expat's callback: refuses every encoding that Expat does not know.
    ///
    /// @param user not used.
    /// @param name of the encoding; not used.
    /// @param info not filled.
    /// @return always 0, which ends the parsing.
    static int fUnknownEncodingHandler(void* user, const XML_Char* name, XML_Encoding* info);

private:
    XML_Parser xmlParser;
    std::stack<std::string> elementStack;
    std::map<std::string, int> fieldIndex;
    std::vector<std::string> currentItem;
    bool inItemsResponse = false;

public:
    /// The books to be present on the device, in the document's order.
    std::vector<BookDescription> addedItems;

private:
    bool inAddedItems = false;

public:
    /// The books to be removed from the device, in the document's order.
    std::vector<BookDescription> deletedItems;

private:
    bool inDeletedItems = false;

public:
    /// The text found directly in each element outside the books, by element name, untrimmed.
    std::map<std::string, std::string> answers;
};
