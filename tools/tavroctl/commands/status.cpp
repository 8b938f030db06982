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

void showStatus(const Account& account, const Output& output) {
    const bool configured = account.isConfigured();
    const bool registered = configured && account.isRegistered();
    std::vector<BookDescription> books;
    if (registered)
        books = catalogueOf(*openSession(account, Need::Device), account);
    const auto present = presentFiles(account);
    const auto downloaded = std::count_if(books.begin(), books.end(), [&](const auto& book) {
        return present.count(itemNumber(book)) > 0;
    });
    const Changes changes = changesOf(account);
    const std::string step = missingStep(account);
    const LastRound round = lastRound(account);
    const bool running = round.outcome == round_outcome::running;
    const bool complete = static_cast<std::size_t>(downloaded) == books.size();
    output.summary({{"configuration", account.folder()},
                    {"configured", configured},
                    {"email", account.value(account_keys::email)},
                    {"downloadFolder", account.downloadFolder()},
                    {"service", serviceUrl()},
                    {"registered", registered},
                    {"loggedIn", registered && account.isLoggedIn()},
                    {"books", books.size()},
                    {"downloaded", downloaded},
                    {"pending", changes.pending},
                    {"lastRound", round.outcome},
                    {"lastRoundTime", round.time},
                    {"lastRoundProblems",
                     output.isJson() ? Json(round.problems) : Json(joined(round.problems, "; "))},
                    {"next", !step.empty()                       ? step
                             : running                           ? "tavroctl status"
                             : changes.waiting < changes.pending ? "tavroctl replay"
                             : !isSynchronised(account)          ? "tavroctl sync"
                             : !complete                         ? "tavroctl download --all"
                             : changes.waiting > 0               ? "tavroctl journal"
                                                                 : ""}});
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
