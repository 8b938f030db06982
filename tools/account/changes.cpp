#include "account/changes.h"

#include "account/book_map.h"
#include "account/failure.h"
#include "account/files.h"
#include "platform/account_files.h"
#include "server/result_codes.h"

namespace tavro::tools {

namespace {

/// Sees that the book map, which is written without a look at the outcome, has `change` now, with
/// its book `item`. Throws Failure.
void requireMoved(const Account& account, const Change& change, int item) {
    const auto map = mappedFiles(account);
    const auto moved = map.find(change.newName);
    const bool left = change.oldName == change.newName || map.count(change.oldName) == 0;
    if (!left || moved == map.end() || moved->second != item)
        throwNotWritten(account.file(account_files::book_map));
}

/// Has the library replay `change`, whose book is `item`, alone. @return whether the service has
/// it.
bool replayAlone(Tavro& session, const Account& account, ReplayJournal& journal,
                 const Change& change, int item) {
    journal.isolate(change);
    session.server->lastError.clear();  // else an earlier answer would pass for this one's
    session.syncDownloadFolder();
    if (!change.flag && session.lastError() != result_codes::success)
        return false;
    journal.settle();
    requireMoved(account, change, item);
    return true;
}

/// Replays `change`, if that can be done, and adds it to what `result` has of its kind.
void replay(Tavro& session, const Account& account, ReplayJournal& journal, const Change& change,
            ReplayResult& result) {
    const auto map = mappedFiles(account);
    const auto book = map.find(change.oldName);
    if (book == map.end())
        result.dropped.push_back(change);
    else if (isWaitingForFile(account, change))
        result.waiting.push_back(change);
    else if (replayAlone(session, account, journal, change, book->second))
        result.uploaded.push_back(change);
    else
        result.kept.push_back(change);
}

}  // namespace

Change replaceBook(Tavro& session, const Account& account, const std::string& oldName,
                   const std::string& newName, bool upload) {
    if (!session.updateACSM(oldName, newName, upload))
        throw Failure("the book map does not know " + oldName,
                      "name one of the files of 'tavroctl map'");
    const auto changes = pendingChanges(account);
    if (changes.empty() || changes.back().oldName != oldName || changes.back().newName != newName)
        throw Failure(
            "the change did not reach the journal " + account.file(account_files::journal),
            "free space or check the permissions, then run the same command again");
    return changes.back();
}

bool isWaitingForFile(const Account& account, const Change& change) {
    return !change.flag && !isRegularFile(account.bookFile(change.newName));
}

ReplayResult replayChanges(Tavro& session, const Account& account) {
    ReplayJournal journal(account);
    if (journal.changes().empty())
        return {};
    ReplayResult result;
    for (auto change = journal.changes().rbegin(); change != journal.changes().rend(); ++change)
        replay(session, account, journal, *change, result);
    auto left = result.kept;
    left.insert(left.end(), result.waiting.begin(), result.waiting.end());
    journal.putBack(left);
    // While the copy of the journal is there, a map that is cut keeps the names of its changes.
    repairAndCopyBookMap(account);
    journal.discardCopy();
    return result;
}

std::vector<Change> dropChanges(const Account& account, const std::string& oldName) {
    const auto changes = pendingChanges(account);
    std::vector<Change> dropped;
    std::vector<Change> left;
    for (const Change& change : changes)
        (change.oldName == oldName ? dropped : left).push_back(change);
    if (dropped.empty())
        throw Failure("the journal has no change of " + oldName,
                      "name an old name of 'tavroctl journal'");
    ReplayJournal journal(account);
    journal.putBack(left);
    journal.discardCopy();
    return dropped;
}

}  // namespace tavro::tools
