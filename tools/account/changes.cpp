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
        throwCannotWrite(account.file(account_files::book_map));
}

/// Has the library replay `change` alone and adds it to what `result` has of its kind.
void replay(Tavro& session, const Account& account, const Change& change, ReplayResult& result) {
    const auto map = mappedFiles(account);
    const auto book = map.find(change.oldName);
    writeJournal(account, {change});
    session.syncDownloadFolder();
    if (book == map.end())
        return result.dropped.push_back(change);
    // The library clears the code of the last answer with each attempt.
    const bool uploaded = change.flag || session.lastError() == result_codes::success;
    if (!uploaded)
        return result.kept.push_back(change);
    requireMoved(account, change, book->second);
    result.uploaded.push_back(change);
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

ReplayResult replayChanges(Tavro& session, const Account& account) {
    const auto changes = pendingChanges(account);
    if (changes.empty())
        return {};
    const JournalBackup backup(account);
    ReplayResult result;
    for (auto change = changes.rbegin(); change != changes.rend(); ++change)
        replay(session, account, *change, result);
    writeJournal(account, result.kept);
    backup.discard();
    repairAndCopyBookMap(account);
    return result;
}

}  // namespace tavro::tools
