#include <CLI/CLI.hpp>
#include <memory>

#include "account/account_lock.h"
#include "account/changes.h"
#include "account/session.h"
#include "tavroctl/change_report.h"
#include "tavroctl/command_line.h"

namespace tavro::tools {

namespace {

void drop(const std::string& oldName, const Account& account, const Output& output) {
    requireConfiguration(account);
    const AccountLock lock(account);
    Listing dropped{"OLD", "NEW", "RESULT"};
    for (const Change& change : dropChanges(account, oldName))
        dropped.add(asJournalEntry(account, change), {change.oldName, change.newName, "dropped"});
    output.result(dropped.json, dropped.table.text() + "The service keeps what it has.");
}

}  // namespace

void addDrop(CommandLine& commandLine) {
    const auto oldName = std::make_shared<std::string>();
    CLI::App& command =
        commandLine.add("drop", "Give the changes of a file up: the service keeps what it has",
                        "drop novel.epub", withOptions(drop, oldName));
    command.add_option("OLD", *oldName, "An old name of 'tavroctl journal'")->required();
}

}  // namespace tavro::tools
