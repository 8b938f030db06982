#include "account/changes.h"

#include "account/book_map.h"
#include "account/files.h"
#include "account/kept_book_map.h"
#include "platform/account_files.h"
#include "program/failure.h"
#include "server/result_codes.h"

namespace tavro::tools {

namespace {

/// The book map `map` once `change` has reached the service.
MappedFiles moved(MappedFiles map, const Change& change) {
    const int item = map.at(change.oldName);
    map.erase(change.oldName);
    map[change.newName] = item;
    return map;
}

/// Has the library replay `change`, whose old name the book map `map` knows, alone. @return whether
/// the service has it.
bool replayAlone(Tavro& session, const Account& account, ReplayJournal& journal,
                 const Change& change, const MappedFiles& map) {
    journal.isolate(change);
    session.server->lastError.clear();  // else an earlier answer would pass for this one's
    session.syncDownloadFolder();
    if (!change.flag && session.lastError() != result_codes::success)
        return false;
    journal.settle();
    requireBookMap(account, map, moved(map, change));
    return true;
}

/// Replays `change`, if that can be done, and adds it to what `result` has of its kind.
void replay(Tavro& session, const Account& account, ReplayJournal& journal, const Change& change,
            ReplayResult& result) {
    const auto map = mappedFiles(account);
    if (map.count(change.oldName) == 0)
        result.dropped.push_back(change);
    else if (isWaitingForFile(account, change))
        result.waiting.push_back(change);
    else if (replayAlone(session, account, journal, change, map))
        result.uploaded.push_back({change.oldName, change.newName, true});
    else
        result.kept.push_back(change);
}

}  // namespace

Change replaceBook(Tavro& session, const Account& account, const std::string& oldName,
                   const std::string& newName, bool upload) {
    const std::size_t before = pendingChanges(account).size();
    if (!session.updateACSM(oldName, newName, upload)) {
        if (mappedFiles(account).count(oldName) > 0)  // so the library could not read the map
            throw Failure("cannot read " + account.file(account_files::book_map),
                          "run the same command again");
        throw unknownToBookMap(oldName);
    }
    const auto changes = pendingChanges(account);
    for (std::size_t index = before; index < changes.size(); ++index)
        if (changes[index].oldName == oldName && changes[index].newName == newName) {
            flush(account.file(account_files::journal));
            return changes[index];
        }
    removeCutRecord(account);  // else the next change would be lost with it
    throwNotWritten(account.file(account_files::journal));
}

bool isWaitingForFile(const Account& account, const Change& change) {
    return !change.flag && !isRegularFile(account.bookFile(change.newName));
}

ReplayResult replayChanges(Tavro& session, const Account& account,
                           const std::function<void(const Change&)>& beginning) {
    ReplayJournal journal(account);
    if (journal.changes().empty())
        return {};
    ReplayResult result;
    for (auto change = journal.changes().rbegin(); change != journal.changes().rend(); ++change) {
        beginning(*change);
        replay(session, account, journal, *change, result);
    }
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
