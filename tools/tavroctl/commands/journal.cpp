#include "account/changes.h"
#include "tavroctl/change_report.h"
#include "tavroctl/command_line.h"

namespace tavro::tools {

namespace {

void showJournal(const Account& account, const Output& output) {
    Listing listing{"OLD", "NEW", "UPLOADED", "STATE"};
    for (const auto& change : pendingChanges(account))
        listing.add(asJournalEntry(account, change),
                    {change.oldName, change.newName, change.flag ? "yes" : "not yet",
                     isWaitingForFile(account, change) ? set_aside : "pending"});
    output.list(listing, "No changes are pending.");
}

}  // namespace

void addJournal(CommandLine& commandLine) {
    commandLine.add("journal", "Show the changes still to be replayed", "journal", showJournal);
}

}  // namespace tavro::tools
