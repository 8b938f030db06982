#include <algorithm>

#include "account/account_lock.h"
#include "account/book_map.h"
#include "account/books.h"
#include "account/catalogue.h"
#include "account/session.h"
#include "tavroctl/commands.h"
#include "tavroctl/progress.h"

namespace tavro::tools {

namespace {

using Files = std::map<int, std::vector<std::string>>;

/// The files of `book` that are there.
std::vector<std::string> filesOf(const Files& files, const BookDescription& book) {
    const auto found = files.find(itemNumber(book));
    return found == files.end() ? std::vector<std::string>{} : found->second;
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const auto& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

/// The book with the item ID `item`. Throws Failure.
const BookDescription& find(const std::vector<BookDescription>& books, const std::string& item) {
    const auto found = std::find_if(books.begin(), books.end(), [&](const auto& book) {
        return book.field(BookDescription::ItemID) == item;
    });
    if (found == books.end())
        throw Failure("the catalogue has no item " + item,
                      "run 'tavroctl sync', then take an item ID out of 'tavroctl books'");
    return *found;
}

/// What a download run has done, as results to print and as the number of failures.
struct DownloadReport {
    Json json = Json::array();
    Table table{{"ITEM", "TITLE", "RESULT"}, {}};
    std::size_t failures = 0;

    void add(const BookDescription& book, const char* result, const std::string& detail) {
        const std::string& item = book.field(BookDescription::ItemID);
        const std::string& title = book.field(BookDescription::Title);
        json.push_back({{"item", item}, {"title", title}, {"result", result}, {"detail", detail}});
        table.rows.push_back({item, title, std::string(result) + ": " + detail});
    }
};

/// Downloads `books` one after the other; one that fails does not stop the others.
void downloadEach(Tavro& session, const Account& account, const Output& output,
                  const std::vector<BookDescription>& books, DownloadReport& report) {
    std::size_t number = 0;
    for (const auto& book : books) {
        const std::string label = std::to_string(++number) + "/" + std::to_string(books.size()) +
                                  " " + book.field(BookDescription::Title);
        try {
            const DownloadProgress progress(output, account.downloadFolder(), label);
            report.add(book, "downloaded", downloadBook(session, account, book));
        } catch (const Failure& failure) {
            ++report.failures;
            report.add(book, "failed", failure.what());
        }
    }
}

/// The books that the command line asks for; those it need not fetch go into `report`.
std::vector<BookDescription> wanted(const Arguments& arguments, const Account& account,
                                    const std::vector<BookDescription>& books,
                                    DownloadReport& report) {
    std::vector<BookDescription> chosen;
    if (!arguments.all) {
        auto items = arguments.items;
        for (auto item = items.begin(); item != items.end(); ++item)
            if (std::find(items.begin(), item, *item) == item)
                chosen.push_back(find(books, *item));
        return chosen;
    }
    const Files present = presentFiles(account);
    for (const auto& book : books) {
        const auto files = filesOf(present, book);
        if (files.empty())
            chosen.push_back(book);
        else
            report.add(book, "present", joined(files));
    }
    return chosen;
}

}  // namespace

void sync(const Arguments& arguments, const Output& output) {
    if (arguments.background)
        return syncInBackground(arguments, output);
    const Account account(arguments.folder);
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    synchronise(*session, account);
    const std::size_t books = session->getAddedBooks().size();
    const std::size_t deleted = session->server->getDeletedBooks().size();
    output.result(
        {{"books", books}, {"deleted", deleted}, {"serverTime", session->server->serverTime}},
        std::to_string(books) + " books in the catalogue, " + std::to_string(deleted) +
            " deleted by the service. Next: tavroctl books, tavroctl download --all");
}

void listBooks(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
    const auto session = openSession(account, Need::Device);
    const Files present = presentFiles(account);
    Json json = Json::array();
    Table table{{"ITEM", "TITLE", "AUTHOR", "TYPE", "FILE"}, {}};
    for (const auto& book : session->getAddedBooks()) {
        const auto files = filesOf(present, book);
        json.push_back({{"item", book.field(BookDescription::ItemID)},
                        {"title", book.field(BookDescription::Title)},
                        {"author", book.field(BookDescription::Artist)},
                        {"type", book.field(BookDescription::FileType)},
                        {"isbn", book.field(BookDescription::ISBN)},
                        {"cover", book.field(BookDescription::CoverArtImage)},
                        {"status", book.field(BookDescription::Status)},
                        {"files", files}});
        table.rows.push_back(
            {book.field(BookDescription::ItemID), book.field(BookDescription::Title),
             book.field(BookDescription::Artist), book.field(BookDescription::FileType),
             files.empty() ? "-" : joined(files)});
    }
    output.result(json, table, "There are no books yet. Next: tavroctl sync");
}

void download(const Arguments& arguments, const Output& output) {
    if (arguments.all == !arguments.items.empty())
        throw UsageError("download takes either item IDs (see 'tavroctl books') or --all");
    const Account account(arguments.folder);
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    DownloadReport report;
    const auto books = wanted(arguments, account, session->getAddedBooks(), report);
    std::filesystem::create_directories(account.downloadFolder());
    downloadEach(*session, account, output, books, report);
    output.result(report.json, report.table, "There are no books to download. Next: tavroctl sync");
    if (report.failures > 0)
        throw Failure(
            std::to_string(report.failures) + " of " + std::to_string(books.size()) +
                " downloads failed",
            "run the same command again; 'tavroctl sync' tells whether service and session "
            "are alive, --trace shows the exchange");
}

void showMap(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
    Json json = Json::array();
    Table table{{"FILE", "ITEM", "STATE"}, {}};
    for (const auto& [name, item] : mappedFiles(account)) {
        const bool present = isPresent(account, name);
        json.push_back({{"file", name}, {"item", item}, {"present", present}});
        table.rows.push_back({name, std::to_string(item), present ? "present" : "missing"});
    }
    const std::string step = missingStep(account);
    output.result(
        json, table,
        "No files are mapped yet. Next: " + (step.empty() ? "tavroctl download --all" : step));
}

}  // namespace tavro::tools
