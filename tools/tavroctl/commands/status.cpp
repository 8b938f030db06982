#include <algorithm>
#include <memory>

#include "account/books.h"
#include "account/catalogue.h"
#include "account/changes.h"
#include "account/files.h"
#include "account/journal.h"
#include "account/round_record.h"
#include "account/session.h"
#include "program/failure.h"
#include "session/account_keys.h"
#include "tavroctl/account_steps.h"
#include "tavroctl/book_file.h"
#include "tavroctl/command_line.h"
#include "tavroctl/joined.h"
#include "tavroctl/service_url.h"
#include "tavroctl/shared_options.h"

namespace tavro::tools {

namespace {

void showFileStatus(const std::string& file, const Account& account, const Output& output) {
    const std::string path = fullPath(account, file);
    if (!isRegularFile(path))
        throw Failure("there is no file " + path,
                      "name a file of the download folder, or see 'tavroctl books'");
    constexpr const char* states[] = {"present", "not pending", "pending"};
    output.summary({{"file", path}, {"status", states[tavro_get_book_status(path.c_str())]}});
}

/// How many changes still have to reach the service, and how many of them cannot.
struct Changes {
    std::size_t pending = 0;
    std::size_t waiting = 0;  ///< for new files that are missing
};

Changes changesOf(const Account& account) {
    Changes changes;
    for (const Change& change : pendingChanges(account)) {
        ++changes.pending;
        changes.waiting += isWaitingForFile(account, change) ? 1 : 0;
    }
    return changes;
}

/// What is on the device of the books of `account`.
struct Books {
    std::size_t known = 0;
    std::size_t downloaded = 0;
};

Books booksOf(const Account& account) {
    if (!account.isConfigured() || !account.isRegistered())
        return {};
    const auto session = openSession(account, Need::Device);
    const auto& books = catalogueOf(*session, account);
    const auto present = presentFiles(account);
    const auto downloaded = std::count_if(books.begin(), books.end(), [&](const auto& book) {
        return present.count(itemNumber(book)) > 0;
    });
    return {books.size(), static_cast<std::size_t>(downloaded)};
}

/// The command that brings the account on; empty when all is done.
std::string nextStep(const Account& account, const Books& books, const Changes& changes,
                     const LastRound& round) {
    if (std::string step = missingStep(account); !step.empty())
        return step;
    if (round.outcome == round_outcome::running)
        return "tavroctl status";
    if (changes.waiting < changes.pending)
        return "tavroctl replay";
    if (!isSynchronised(account))
        return "tavroctl sync";
    if (books.downloaded < books.known)
        return "tavroctl download --all";
    return changes.waiting > 0 ? "tavroctl journal" : "";
}

void showStatus(const Account& account, const Output& output) {
    const Books books = booksOf(account);
    const Changes changes = changesOf(account);
    const LastRound round = lastRound(account);
    const bool registered = account.isConfigured() && account.isRegistered();
    output.summary({{"configuration", account.folder()},
                    {"configured", account.isConfigured()},
                    {"email", account.value(account_keys::email)},
                    {"downloadFolder", account.downloadFolder()},
                    {"service", serviceUrl()},
                    {"registered", registered},
                    {"loggedIn", registered && account.isLoggedIn()},
                    {"books", books.known},
                    {"downloaded", books.downloaded},
                    {"pending", changes.pending},
                    {"lastRound", round.outcome},
                    {"lastRoundTime", round.time},
                    {"lastRoundProblems",
                     output.isJson() ? Json(round.problems) : Json(joined(round.problems, "; "))},
                    {"lastRoundAdvice", round.advice},
                    {"next", nextStep(account, books, changes, round)}});
}

}  // namespace

void addStatus(CommandLine& commandLine) {
    const auto file = std::make_shared<std::string>();
    CLI::App& command = commandLine.add(
        "status", "Show where things stand, or whether a file is present or pending",
        "status novel.epub", [file](const Account& account, const Output& output) {
            file->empty() ? showStatus(account, output) : showFileStatus(*file, account, output);
        });
    addFile(command, *file, false);
}

}  // namespace tavro::tools
