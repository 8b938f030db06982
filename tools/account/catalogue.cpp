#include "account/catalogue.h"

#include <optional>
#include <vector>

#include "account/files.h"
#include "account/service_failure.h"
#include "platform/account_files.h"
#include "server/result_codes.h"
#include "session/item_number.h"

namespace tavro::tools {

namespace {

/// Puts the catalogue `former` back into the file `path`, or none where there was none.
void putBack(const std::string& path, const std::optional<std::string>& former) {
    if (former)
        replaceFile(path, *former);
    else
        removeFile(path);
}

}  // namespace

void synchronise(Tavro& session, const Account& account) {
    const std::string file = account.file(account_files::catalogue);
    const auto former = contentOf(file);
    const bool answered = session.syncServer();
    // The library calls every readable answer a success, and leaves judging the code to us; nor
    // does it look whether the file was written.
    if (answered && session.lastError() == result_codes::success) {
        const std::vector<char>& answer = session.server->getLastXMLAnswer();
        if (const std::string catalogue(answer.begin(), answer.end()); contentOf(file) != catalogue)
            replaceFile(file, catalogue);
        return;
    }
    if (answered)
        putBack(file, former);
    throw serviceFailure(*session.server, "the catalogue was not fetched", apiAddress(),
                         "run 'tavroctl login' again");
}

const std::vector<BookDescription>& catalogueOf(const Tavro& session, const Account& account) {
    if (const auto& books = session.getAddedBooks(); !books.empty())
        return books;
    contentOf(account.file(Tavro::tavro_books));  // throws when it cannot be read
    return session.getAddedBooks();               // it may have failed once only
}

bool isSynchronised(const Account& account) {
    return exists(account.file(account_files::catalogue));
}

std::string whyNoBooks(const Account& account) {
    return isSynchronised(account) ? "The service has no books for this account."
                                   : "There are no books yet. Next: tavroctl sync";
}

bool hasItemNumber(const BookDescription& book) {
    return std::to_string(itemNumber(book)) == book.field(BookDescription::ItemID);
}

int itemNumber(const BookDescription& book) {
    return session::itemNumber(book.field(BookDescription::ItemID));
}

}  // namespace tavro::tools
