#include "account/books.h"
#include "account/catalogue.h"
#include "account/session.h"
#include "tavroctl/command_line.h"
#include "tavroctl/joined.h"

namespace tavro::tools {

namespace {

/// The ISBN of `book`; the one of 13 digits where it has no other.
const std::string& isbnOf(const BookDescription& book) {
    const std::string& isbn = book.field(BookDescription::ISBN);
    return isbn.empty() ? book.field(BookDescription::ISBN13) : isbn;
}

void listBooks(const Account& account, const Output& output) {
    const auto session = openSession(account, Need::Device);
    auto present = presentFiles(account);
    Listing listing{"ITEM", "TITLE", "AUTHOR", "TYPE", "FILE"};
    for (const auto& book : catalogueOf(*session, account)) {
        const auto& files = present[itemNumber(book)];
        listing.add({{"item", book.field(BookDescription::ItemID)},
                     {"title", book.field(BookDescription::Title)},
                     {"author", book.field(BookDescription::Artist)},
                     {"type", book.field(BookDescription::FileType)},
                     {"isbn", isbnOf(book)},
                     {"cover", book.field(BookDescription::CoverArtImage)},
                     {"status", book.field(BookDescription::Status)},
                     {"files", files}},
                    {book.field(BookDescription::ItemID), book.field(BookDescription::Title),
                     book.field(BookDescription::Artist), book.field(BookDescription::FileType),
                     files.empty() ? "-" : joined(files, ", ")});
    }
    output.list(listing, whyNoBooks(account));
}

}  // namespace

void addBooks(CommandLine& commandLine) {
    commandLine.add("books", "List the books of the catalogue", "books", listBooks);
}

}  // namespace tavro::tools
