#include "tavro-sync/sync_round.h"

#include <filesystem>
#include <optional>

#include "account/account_lock.h"
#include "account/books.h"
#include "account/catalogue.h"
#include "account/changes.h"
#include "account/files.h"
#include "account/round_record.h"
#include "account/service_failure.h"
#include "account/session.h"
#include "platform/account_files.h"
#include "program/counted.h"
#include "program/failure.h"
#include "session/account_keys.h"
#include "tavro-sync/deleted_books.h"
#include "tavro-sync/download_list.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// How often the download list follows the downloads: writing it for each book would make a large
/// catalogue slow.
constexpr std::chrono::seconds list_interval(1);

/// "ITEM TITLE", for the log.
std::string nameOf(const BookDescription& book) {
    return book.field(BookDescription::ItemID) + " " + book.field(BookDescription::Title);
}

}  // namespace

SyncRound::SyncRound(const Account& account, const ActivityLog& log)
    : account_(account),
      log_(log),
      folder_(account.downloadFolder()),
      placeholders_(folder_),
      covers_(account.file(account_files::covers)) {}

bool SyncRound::run() {
    log_.note("a round begins");
    requireConfiguration(account_);
    const AccountLock lock(account_);
    const RoundRecord record(account_);
    if (!record.problem().empty())
        fail(record.problem());
    sessionId_ = account_.value(account_keys::session);
    try {
        const auto session = openSession(account_, Need::Session);
        requireDownloadFolder(account_);
        synchroniseWith(*session);
    } catch (const std::exception& error) {
        endAs(error, record);
        throw;
    }
    record.end(problems_);
    log_.note("the round ends: " + std::to_string(downloaded_) + " downloaded, " +
              std::to_string(missing_.size()) + " missing, " +
              counted(problems_.size(), "problem"));
    return problems_.empty();
}

void SyncRound::endAs(const std::exception& error, const RoundRecord& record) {
    const auto* failure = dynamic_cast<const Failure*>(&error);
    problems_.emplace_back(error.what());
    try {
        if (isStillLoggedIn())
            record.end(problems_, failure != nullptr ? *failure : Failure(""));
        else
            cleanUp();
    } catch (const std::exception& another) {  // the first one counts
        log_.note(another.what());
    }
}

void SyncRound::synchroniseWith(Tavro& session) {
    sendChanges(session);
    synchronise(session, account_);
    const auto& books = session.getAddedBooks();
    log_.note("the catalogue has " + counted(books.size(), "book"));
    requireAccount();
    removeDeleted(session);
    announce(books);
    downloadMissing(session, books);
}

void SyncRound::sendChanges(Tavro& session) {
    const ReplayResult result = replayChanges(session, account_);
    for (const auto& change : result.uploaded)
        log_.note("sent " + change.newName + " in place of " + change.oldName);
    for (const auto& change : result.dropped)
        log_.note("dropped the change of " + change.oldName + ", which is no book of the account");
    for (const auto& change : result.waiting)
        log_.note("the change of " + change.oldName + " waits: its new file " + change.newName +
                  " is not there (give it up with 'tavroctl drop')");
    for (const auto& change : result.kept)
        fail("the change of " + change.oldName + " was not taken and stays in the journal");
}

void SyncRound::removeDeleted(const Tavro& session) {
    std::set<int> items;
    for (const auto& book : session.server->getDeletedBooks())
        if (hasItemNumber(book))
            items.insert(itemNumber(book));
    for (const auto& book : session.getAddedBooks())
        items.erase(itemNumber(book));
    const DeletedFiles files = removeBooks(account_, folder_, items);
    for (const auto& name : files.removed)
        log_.note("removed " + name + ", which the service deleted");
    for (const auto& name : files.changed)
        log_.note("kept " + name + ": the service deleted it, but its change is not sent yet");
    for (const auto& name : files.strange)
        fail("kept " + name + ": the service deleted it, but it lies outside the folder");
    for (const auto& name : files.stuck)
        fail("cannot remove " + name + ", which the service deleted");
    for (const int item : items)
        covers_.remove(item);
}

void SyncRound::announce(const std::vector<BookDescription>& books) {
    const auto present = presentFiles(account_);
    for (const auto& book : books) {
        if (!hasItemNumber(book))
            log_.note("the catalogue has a book without a proper item id: " + nameOf(book));
        else if (present.count(itemNumber(book)) == 0)
            missing_.insert(itemNumber(book));
    }
    updateList(true);
    placeMissing();
    requireAccount();
}

void SyncRound::downloadMissing(Tavro& session, const std::vector<BookDescription>& books) {
    std::optional<Downloads> downloads;
    if (!missing_.empty())
        downloads.emplace(session, account_);
    for (const auto& book : books) {
        if (!hasItemNumber(book) || missing_.count(itemNumber(book)) == 0)
            continue;
        requireAccount();
        fetchCover(book);
        if (!isServiceGone_)
            download(*downloads, book);
    }
    for (const auto& book : books)
        if (hasItemNumber(book))
            fetchCover(book);
    requireAccount();
    if (!downloads)
        return;
    placeMissing();  // one that could not be removed would count as pending
    updateList(true);
}

void SyncRound::download(Downloads& downloads, const BookDescription& book) {
    std::string name;
    try {
        name = downloads.fetch(book);
    } catch (const Failure& failure) {
        requireAccount();  // the next one's books are not for this round
        fail("did not get " + nameOf(book) + ": " + failure.what());
        if (!isDownloadPageReachable())
            giveUp();
        return;
    }
    try {
        requireAccount();
    } catch (...) {  // a log-out takes the books with it, the one on its way as well
        std::error_code ignored;
        fs::remove(folder_ + "/" + name, ignored);
        throw;
    }
    log_.note("downloaded " + nameOf(book) + " as " + name);
    ++downloaded_;
    missing_.erase(itemNumber(book));
    placeholders_.remove(itemNumber(book));
    updateList(false);
}

void SyncRound::giveUp() {
    isServiceGone_ = true;
    fail("the downloads stop, with " + counted(missing_.size(), "book") +
         " missing: no answer from " + downloadAddress());
}

bool SyncRound::lacksCover(const BookDescription& book) {
    const std::string& url = book.field(BookDescription::CoverArtImage);
    return !url.empty() && !covers_.has(itemNumber(book)) && !covers_.isSilent(url);
}

void SyncRound::fetchCover(const BookDescription& book) {
    if (!lacksCover(book))
        return;
    requireAccount();
    try {
        covers_.fetch(itemNumber(book), book.field(BookDescription::CoverArtImage));
        log_.note("stored the cover of " + nameOf(book));
    } catch (const Failure& failure) {
        log_.note(failure.what());
    }
}

void SyncRound::placeMissing() {
    for (const std::string& problem : placeholders_.replace(missing_))
        fail(problem);
}

void SyncRound::updateList(bool now) {
    if (!now && std::chrono::steady_clock::now() - listed_ < list_interval)
        return;
    std::vector<std::string> files;
    for (const int item : missing_)
        files.push_back(placeholders_.path(item));
    writeDownloadList(account_.file(account_files::download_list), files);
    listed_ = std::chrono::steady_clock::now();
}

bool SyncRound::isStillLoggedIn() const {
    return Account(account_.folder()).value(account_keys::session) == sessionId_;
}

void SyncRound::requireAccount() const {
    if (!isStillLoggedIn())
        throw Failure("the account was logged out meanwhile");
}

void SyncRound::cleanUp() const {
    placeholders_.replace({});
    if (exists(account_.file(account_files::configuration)))
        return;  // there is another account by now
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(account_.folder(), ignored))
        fs::remove_all(entry, ignored);
    fs::remove(account_.folder(), ignored);
}

void SyncRound::fail(const std::string& what) {
    problems_.push_back(what);
    log_.note(what);
}

}  // namespace tavro::tools
