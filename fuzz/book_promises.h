#pragma once

#include <string>

#include "books/book_reader.h"
#include "require.h"
#include "text/text.h"

/// Requires of what a book says of itself that a device can be told it.
inline void requirePresentable(const tavro::service::BookDetails& details) {
    using tavro::service::cleanText;
    require(!details.title.empty() && cleanText(details.title) == details.title &&
                cleanText(details.artist) == details.artist,
            "title and author are single lines that XML can carry");
    require(details.isbn.empty() || details.isbn.size() == 10, "an ISBN has ten digits");
    require(details.isbn13.empty() || details.isbn13.size() == 13,
            "an ISBN-13 has thirteen digits");
    require(details.cover.empty() == details.coverType.empty(), "a cover has a media type");
}
