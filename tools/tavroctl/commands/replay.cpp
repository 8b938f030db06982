#include "account/account_lock.h"
#include "account/books.h"
#include "account/changes.h"
#include "account/session.h"
#include "program/counted.h"
#include "tavroctl/change_report.h"
#include "tavroctl/command_line.h"
#include "tavroctl/retry_pauses.h"

namespace tavro::tools {

namespace {

std::string staying(const std::vector<Change>& kept) {
    return counted(kept.size(), "change") + (kept.size() == 1 ? " stays" : " stay") + " pending";
}

/// Replays, telling when a signal has cut the pauses short.
ReplayResult replayWithPauses(Tavro& session, const Account& account, const Output& output) {
    RetryPauses pauses(output, session);
    auto result = replayChanges(session, account,
                                [&](const Change& change) { pauses.beginUpload(change.newName); });
    if (pauses.areInterrupted())  // the signal ends the program when `pauses` goes
        output.error(
            Failure("interrupted: " + staying(result.kept), "run 'tavroctl replay' again"));
    return result;
}

void addRows(Table& table, const std::vector<Change>& changes, const char* result) {
    for (const auto& change : changes)
        table.rows.push_back({change.oldName, change.newName, result});
}

/// Throws the Failure that only changes without their new files are left, `count` of them.
[[noreturn]] void throwWaiting(const Account& account, std::size_t count) {
    requireDownloadFolder(account);  // else no file is there, and nothing is to be given up
    throw Failure(count == 1 ? "1 change is set aside: its new file is not there"
                             : std::to_string(count) +
                                   " changes are set aside: their new files are not there",
                  "bring the new files back into " + account.downloadFolder().string() +
                      ", or give a change up with 'tavroctl drop OLD'; see 'tavroctl journal'");
}

void replay(const Account& account, const Output& output) {
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    const ReplayResult result = replayWithPauses(*session, account, output);
    Table table{{"OLD", "NEW", "RESULT"}, {}};
    addRows(table, result.uploaded, "uploaded");
    addRows(table, result.dropped, "dropped: the book map does not know the old name");
    addRows(table, result.kept, "still pending");
    addRows(table, result.waiting, set_aside);
    output.result({{"uploaded", asJson(result.uploaded)},
                   {"dropped", asJson(result.dropped)},
                   {"pending", asJson(result.kept)},
                   {"waiting", asJson(result.waiting)}},
                  table, "No changes were pending.");
    if (!result.kept.empty())
        throw uploadFailure(*session, staying(result.kept));
    if (!result.waiting.empty())
        throwWaiting(account, result.waiting.size());
}

}  // namespace

void addReplay(CommandLine& commandLine) {
    commandLine.add("replay", "Upload the journalled changes", "replay", replay);
}

}  // namespace tavro::tools
