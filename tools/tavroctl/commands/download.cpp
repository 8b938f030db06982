#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "account/account_lock.h"
#include "account/books.h"
#include "account/catalogue.h"
#include "account/downloads.h"
#include "account/service_failure.h"
#include "account/session.h"
#include "program/counted.h"
#include "program/failure.h"
#include "tavroctl/command_line.h"
#include "tavroctl/joined.h"
#include "tavroctl/progress.h"

namespace tavro::tools {

namespace {

using Books = std::vector<BookDescription>;
using Chosen = std::vector<const BookDescription*>;

struct Options {
    std::vector<std::string> items;
    bool all = false;
};

/// The book with the item ID `item`. Throws Failure.
const BookDescription& find(const Books& books, const std::string& item) {
    const auto found = std::find_if(books.begin(), books.end(), [&](const auto& book) {
        return book.field(BookDescription::ItemID) == item;
    });
    if (found == books.end())
        throw Failure("the catalogue has no item " + item,
                      "run 'tavroctl sync', then take an item ID out of 'tavroctl books'");
    return *found;
}

/// The books with the item IDs `items`, each once. Throws Failure.
Chosen chosen(const std::vector<std::string>& items, const Books& books) {
    Chosen wanted;
    for (auto item = items.begin(); item != items.end(); ++item)
        if (std::find(items.begin(), item, *item) == item)
            wanted.push_back(&find(books, *item));
    return wanted;
}

/// What became of one book.
struct Result {
    const BookDescription* book;
    const char* result;
    std::string detail;
};

/// What a download run has done. Small until it is printed: the library walks through its book map
/// for each book, and what lies amid that in memory makes each walk longer.
class Report {
public:
    void add(const BookDescription& book, const char* result, std::string detail) {
        ++counts_[result];
        results_.push_back({&book, result, std::move(detail)});
    }

    std::size_t count(const char* result) const {
        const auto found = counts_.find(result);
        return found == counts_.end() ? 0 : found->second;
    }

    void print(const Account& account, const Output& output) const {
        Listing listing{"ITEM", "TITLE", "RESULT"};
        for (const auto& [book, result, detail] : results_) {
            const std::string& item = book->field(BookDescription::ItemID);
            const std::string& title = book->field(BookDescription::Title);
            listing.add({{"item", item}, {"title", title}, {"result", result}, {"detail", detail}},
                        {item, title, std::string(result) + ": " + detail});
        }
        output.result(listing.json, listing.table, whyNoBooks(account),
                      told("downloaded") + ", " + told("present") + ", " + told("failed"));
    }

private:
    std::string told(const char* result) const {
        return std::to_string(count(result)) + " " + result;
    }

    std::vector<Result> results_;
    std::map<std::string, std::size_t> counts_;
};

/// The books of which no file is here, each once; the others go into `report`.
Chosen missing(const Account& account, const Books& books, Report& report) {
    auto present = presentFiles(account);
    Chosen wanted;
    std::set<int> seen;
    for (const auto& book : books)
        if (!hasItemNumber(book))
            report.add(book, "failed", "the book map cannot hold its item ID");
        else if (!seen.insert(itemNumber(book)).second)
            continue;
        else if (const auto& files = present[itemNumber(book)]; files.empty())
            wanted.push_back(&book);
        else
            report.add(book, "present", joined(files, ", "));
    return wanted;
}

/// Downloads `books` one after the other; one that fails does not stop the others, unless the
/// service is down. @return the failure that tells so, if it is.
std::optional<Failure> downloadEach(Tavro& session, const Account& account, const Output& output,
                                    const Chosen& books, Report& report) {
    Downloads downloads(session, account);
    DownloadProgress progress(output, account.downloadFolder());
    std::size_t number = 0;
    for (const BookDescription* book : books) {
        progress.begin(std::to_string(++number) + " of " + std::to_string(books.size()) + "  " +
                       book->field(BookDescription::Title));
        try {
            report.add(*book, "downloaded", downloads.fetch(*book));
        } catch (const Failure& failure) {
            report.add(*book, "failed", failure.what());
            if (isDownloadPageReachable())
                continue;
            return noAnswer("the download stopped, with " + counted(books.size() - number, "book") +
                                " not tried",
                            downloadAddress());
        }
    }
    return std::nullopt;
}

void download(const Options& options, const Account& account, const Output& output) {
    if (options.all == !options.items.empty())
        throw UsageError("download takes either item IDs (see 'tavroctl books') or --all");
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    requireDownloadFolder(account);
    Report report;
    const Books& catalogue = catalogueOf(*session, account);
    const Chosen books =
        options.all ? missing(account, catalogue, report) : chosen(options.items, catalogue);
    const auto down = downloadEach(*session, account, output, books, report);
    report.print(account, output);
    if (down)
        throw *down;
    if (const std::size_t failures = report.count("failed"); failures > 0)
        throw Failure(
            std::to_string(failures) + " of " +
                std::to_string(failures + report.count("downloaded")) + " downloads failed",
            "run the same command again; 'tavroctl sync' tells whether service and session "
            "are alive, --trace shows the exchange");
}

}  // namespace

void addDownload(CommandLine& commandLine) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = commandLine.add("download", "Download books", "download --all",
                                        withOptions(download, options));
    command.add_option("ITEM", options->items, "Item IDs, also of books that are there");
    command.add_flag("--all", options->all, "All books that are not there yet");
}

}  // namespace tavro::tools
