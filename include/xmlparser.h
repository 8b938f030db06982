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

    /// Reads a document of `length` bytes at `data`, which need not be zero-terminated and is not
    /// kept. The end of the document is never demanded: a document cut short between two elements
    /// is read without complaint, so that every complete book before the cut is kept.
    ///
    /// @return false when the document is not well-formed; what was read before the error stays.
    bool parse(const char* data, unsigned length);

    // Expat's callbacks. `user` is the parser object; a call without one is ignored.

    /// Notes that the element `name` has opened.
    static void fStartElementHandler(void* user, const XML_Char* name, const XML_Char** attributes);

    /// Closes the innermost open element and stores the book that it completes.
    static void fEndElementHandler(void* user, const XML_Char* name);

    /// Takes a piece of text of the innermost open element. Inside a book a field keeps only its
    /// last piece; elsewhere the pieces add up.
    static void fCharacterDataHandler(void* user, const XML_Char* text, int length);

    /// Refuses every encoding that expat does not know: returns 0.
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
