#include "account/journal.h"

#include <unistd.h>

#include <algorithm>

#include "account/files.h"
#include "account/own_files.h"
#include "platform/account_files.h"

namespace tavro::tools {

namespace {

std::string journalFile(const Account& account) {
    return account.file(account_files::journal);
}

std::string copyFile(const Account& account) {
    return account.file(own_files::journal_copy);
}

/// The records of the journal file `path`, oldest first.
std::vector<Change> recordsOf(const std::string& path) {
    SyncJournal journal(path);
    if (exists(path) && journal.reload() != 0)
        throwCannotRead(path);
    std::vector<Change> records;
    for (Change record; journal.pop(record);)
        records.push_back(record);
    std::reverse(records.begin(), records.end());
    return records;
}

bool isSame(const Change& left, const Change& right) {
    return left.oldName == right.oldName && left.newName == right.newName;
}

/// The records of `records` that `others` lacks, each as often as it is there.
std::vector<Change> without(const std::vector<Change>& records, std::vector<Change> others) {
    std::vector<Change> rest;
    for (const Change& record : records) {
        const auto other = std::find_if(others.begin(), others.end(), [&](const Change& candidate) {
            return isSame(candidate, record);
        });
        if (other == others.end())
            rest.push_back(record);
        else
            others.erase(other);
    }
    return rest;
}

/// Appends `changes` to the journal file `path`. Throws Failure unless it then ends with them.
void append(const std::string& path, const std::vector<Change>& changes) {
    SyncJournal journal(path);
    for (const Change& change : changes)
        journal.push(change);
    const auto written = recordsOf(path);
    if (written.size() < changes.size() ||
        !std::equal(changes.rbegin(), changes.rend(), written.rbegin(), isSame))
        throwNotWritten(path);
}

}  // namespace

std::vector<Change> pendingChanges(const Account& account) {
    return recordsOf(journalFile(account));
}

void writeJournal(const Account& account, const std::vector<Change>& changes) {
    if (SyncJournal(journalFile(account)).clearFile() != 0)
        throwCannotWrite(journalFile(account));
    append(journalFile(account), changes);
}

ReplayJournal::ReplayJournal(const Account& account)
    : account_(account), changes_(pendingChanges(account)), expected_(changes_) {
    if (!changes_.empty())
        replaceByCopy(copyFile(account), journalFile(account));
}

void ReplayJournal::noteArrivals() {
    const auto arrived = without(pendingChanges(account_), expected_);
    append(copyFile(account_), arrived);
    arrived_.insert(arrived_.end(), arrived.begin(), arrived.end());
}

void ReplayJournal::isolate(const Change& change) {
    noteArrivals();
    writeJournal(account_, {change});
    expected_ = {change};
}

void ReplayJournal::putBack(const std::vector<Change>& kept) {
    noteArrivals();
    auto all = kept;
    all.insert(all.end(), arrived_.begin(), arrived_.end());
    writeJournal(account_, all);
    expected_ = all;
}

void ReplayJournal::discardCopy() const {
    ::unlink(copyFile(account_).c_str());
}

void restoreJournal(const Account& account) {
    if (!exists(copyFile(account)))
        return;
    append(journalFile(account), without(recordsOf(copyFile(account)), pendingChanges(account)));
    ::unlink(copyFile(account).c_str());
}

}  // namespace tavro::tools
