#include "tavroctl/change_report.h"
#include "tavroctl/command_line.h"

namespace tavro::tools {

namespace {

void showJournal(const Account& account, const Output& output) {
    Listing listing{"OLD", "NEW", "UPLOADED"};
    for (const auto& change : pendingChanges(account))
        listing.add(asJson(change),
                    {change.oldName, change.newName, change.flag ? "yes" : "not yet"});
    output.list(listing, "No changes are pending.");
}

}  // namespace

void addJournal(CommandLine& commandLine) {
    commandLine.add("journal", "Show the changes still to be replayed", "journal", showJournal);
}

}  // namespace tavro::tools
