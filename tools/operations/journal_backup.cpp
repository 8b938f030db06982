#include "journal_backup.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "atomic_file.h"
#include "tavro.h"

namespace reader {

namespace {

std::string backupFile(const Account& account) {
    return account.file(std::string(Tavro::journal_file) + "_replaying");
}

/// The records of the journal file `path`, oldest first.
std::vector<SyncJournal::Record> recordsOf(const std::string& path) {
    SyncJournal journal(path);
    journal.reload();
    std::vector<SyncJournal::Record> records;
    for (SyncJournal::Record record; journal.pop(record);)
        records.push_back(record);
    std::reverse(records.begin(), records.end());
    return records;
}

}  // namespace

std::vector<SyncJournal::Record> pendingChanges(const Account& account) {
    return recordsOf(account.file(Tavro::journal_file));
}

bool take(std::vector<SyncJournal::Record>& records, const SyncJournal::Record& wanted) {
    const auto found = std::find_if(records.begin(), records.end(), [&](const auto& record) {
        return record.oldName == wanted.oldName && record.newName == wanted.newName;
    });
    if (found == records.end())
        return false;
    records.erase(found);
    return true;
}

JournalBackup::JournalBackup(const Account& account) : path_(backupFile(account)) {
    const std::string journal = account.file(Tavro::journal_file);
    if (std::filesystem::exists(journal))
        copyAtomically(journal, path_);
}

void JournalBackup::discard() const {
    ::unlink(path_.c_str());
}

void JournalBackup::requireSpace() const {
    const std::string trial = path_ + ".trial";
    copyAtomically(path_, trial);
    ::unlink(trial.c_str());
}

void restoreJournal(const Account& account) {
    const std::string backup = backupFile(account);
    if (!std::filesystem::exists(backup))
        return;
    auto present = pendingChanges(account);
    SyncJournal journal(account.file(Tavro::journal_file));
    for (const auto& record : recordsOf(backup))
        if (!take(present, record))
            journal.push(record);
    // The journal is written without a look at the outcome: whether all is there shows now.
    present = pendingChanges(account);
    for (const auto& record : recordsOf(backup))
        if (!take(present, record))
            throwCannotWrite(account.file(Tavro::journal_file));
    ::unlink(backup.c_str());
}

}  // namespace reader
