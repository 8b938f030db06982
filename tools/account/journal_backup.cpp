#include "account/journal_backup.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "account/files.h"
#include "account/own_files.h"
#include "platform/account_files.h"

namespace tavro::tools {

namespace {

std::string journalFile(const Account& account) {
    return account.file(account_files::journal);
}

std::string backupFile(const Account& account) {
    return account.file(own_files::journal_copy);
}

/// The records of the journal file `path`, oldest first.
std::vector<Change> recordsOf(const std::string& path) {
    SyncJournal journal(path);
    journal.reload();
    std::vector<Change> records;
    for (Change record; journal.pop(record);)
        records.push_back(record);
    std::reverse(records.begin(), records.end());
    return records;
}

bool isSame(const Change& left, const Change& right) {
    return left.oldName == right.oldName && left.newName == right.newName;
}

/// Takes one record with the names of `wanted` out of `records`; false if there is none.
bool take(std::vector<Change>& records, const Change& wanted) {
    const auto found = std::find_if(records.begin(), records.end(),
                                    [&](const Change& record) { return isSame(record, wanted); });
    if (found == records.end())
        return false;
    records.erase(found);
    return true;
}

/// Adds `changes` to the journal. Throws Failure unless it then holds them behind `present`.
void append(const Account& account, std::vector<Change> present,
            const std::vector<Change>& changes) {
    SyncJournal journal(journalFile(account));
    for (const Change& change : changes)
        journal.push(change);
    present.insert(present.end(), changes.begin(), changes.end());
    const auto written = pendingChanges(account);
    if (!std::equal(present.begin(), present.end(), written.begin(), written.end(), isSame))
        throwCannotWrite(journalFile(account));
}

}  // namespace

std::vector<Change> pendingChanges(const Account& account) {
    return recordsOf(journalFile(account));
}

void writeJournal(const Account& account, const std::vector<Change>& changes) {
    SyncJournal(journalFile(account)).clearFile();
    append(account, {}, changes);
}

JournalBackup::JournalBackup(const Account& account) : path_(backupFile(account)) {
    if (std::filesystem::exists(journalFile(account)))
        replaceByCopy(path_, journalFile(account));
}

void JournalBackup::discard() const {
    ::unlink(path_.c_str());
}

void restoreJournal(const Account& account) {
    if (!std::filesystem::exists(backupFile(account)))
        return;
    const auto present = pendingChanges(account);
    auto rest = present;
    std::vector<Change> missing;
    for (const Change& record : recordsOf(backupFile(account)))
        if (!take(rest, record))
            missing.push_back(record);
    append(account, present, missing);
    ::unlink(backupFile(account).c_str());
}

}  // namespace tavro::tools
