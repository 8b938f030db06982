#include "account/account_lock.h"
#include "account/changes.h"
#include "account/session.h"
#include "tavroctl/change_report.h"
#include "tavroctl/command_line.h"
#include "tavroctl/retry_pauses.h"

namespace tavro::tools {

namespace {

/// Replays, telling when a signal has cut the pauses short.
ReplayResult replayWithPauses(Tavro& session, const Account& account, const Output& output) {
    const RetryPauses pauses(output);
    auto result = replayChanges(session, account);
    if (pauses.areInterrupted())  // the signal ends the program when `pauses` goes
        output.error(
            Failure("interrupted: " + std::to_string(result.kept.size()) + " changes stay pending",
                    "run 'tavroctl replay' again"));
    return result;
}

void addRows(Table& table, const std::vector<Change>& changes, const char* result) {
    for (const auto& change : changes)
        table.rows.push_back({change.oldName, change.newName, result});
}

void replay(const Account& account, const Output& output) {
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    const ReplayResult result = replayWithPauses(*session, account, output);
    Table table{{"OLD", "NEW", "RESULT"}, {}};
    addRows(table, result.uploaded, "uploaded");
    addRows(table, result.dropped, "dropped: the book map does not know the old name");
    addRows(table, result.kept, "still pending");
    output.result({{"uploaded", asJson(result.uploaded)},
                   {"dropped", asJson(result.dropped)},
                   {"pending", asJson(result.kept)}},
                  table, "No changes were pending.");
    if (!result.kept.empty())
        throw uploadFailure(*session, std::to_string(result.kept.size()) + " changes stay pending");
}

}  // namespace

void addReplay(CommandLine& commandLine) {
    commandLine.add("replay", "Upload the journalled changes", "replay", replay);
}

}  // namespace tavro::tools
