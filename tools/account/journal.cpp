#include "account/journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include "account/files.h"
#include "account/own_files.h"
#include "platform/account_files.h"
#include "posix/file_descriptor.h"
#include "posix/retry_after_signal.h"
#include "store/record_reader.h"

namespace tavro::tools {

namespace {

std::string journalFile(const Account& account) {
    return account.file(account_files::journal);
}

std::string copyFile(const Account& account) {
    return account.file(own_files::journal_copy);
}

/// How many of the bytes `content` of a journal are whole records.
std::size_t wholeRecords(std::string_view content) {
    store::RecordReader reader(content);
    std::size_t whole = 0;
    std::string_view oldName;
    std::string_view newName;
    for (std::array<unsigned char, 4> flag = {};
         reader.readText(oldName) && reader.readText(newName) && reader.readWord(flag);)
        whole += oldName.size() + 1 + newName.size() + 1 + flag.size();
    return whole;
}

/// The records of the journal file `path`, oldest first.
std::vector<Change> recordsOf(const std::string& path) {
    SyncJournal journal(path);
    if (exists(path) && journal.reload() != 0)
        throwUnreadable(path);
    std::vector<Change> records;
    for (Change record; journal.pop(record);)
        records.push_back(record);
    std::reverse(records.begin(), records.end());
    // A journal that cannot be mapped is an empty one to the library.
    if (records.empty() && wholeRecords(contentOf(path).value_or("")) > 0)
        throwCannotRead(path, 0);
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

void removeCutRecordOf(const std::string& path) {
    const posix::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    if (!file && errno == ENOENT)
        return;
    // The lock that a writer holds while it appends a record.
    if (!file || posix::retryAfterSignal([&] { return ::lockf(file.get(), F_LOCK, 0); }) != 0)
        throwCannotWrite(path, errno);
    const std::string content = contentThrough(file.get(), path);
    const std::size_t whole = wholeRecords(content);
    if (whole < content.size() && ::ftruncate(file.get(), static_cast<off_t>(whole)) != 0)
        throwCannotWrite(path, errno);
}

/// Appends `changes` to the journal file `path`, one by one: behind a record that is cut the next
/// one would read as another change. Throws Failure.
void append(const std::string& path, const std::vector<Change>& changes) {
    SyncJournal journal(path);
    for (const Change& change : changes) {
        const std::size_t before = recordsOf(path).size();
        journal.push(change);
        const auto written = recordsOf(path);
        if (written.size() > before && isSame(written.back(), change))
            continue;
        removeCutRecordOf(path);
        throwNotWritten(path);
    }
    if (!changes.empty())
        flush(path);  // before the other file that holds them goes
}

/// When the file `path` was last changed; none when it cannot be told.
timespec changeTime(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_ctim : timespec{};
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
    isolated_ = changeTime(journalFile(account_));
}

void ReplayJournal::settle() {
    const timespec now = changeTime(journalFile(account_));
    if (now.tv_sec != isolated_.tv_sec || now.tv_nsec != isolated_.tv_nsec)
        expected_.clear();
}

void ReplayJournal::putBack(const std::vector<Change>& kept) {
    noteArrivals();
    auto all = kept;
    all.insert(all.end(), arrived_.begin(), arrived_.end());
    writeJournal(account_, all);
    expected_ = all;
}

void ReplayJournal::discardCopy() const {
    removeFile(copyFile(account_));
}

void removeCutRecord(const Account& account) {
    removeCutRecordOf(journalFile(account));
}

void restoreJournal(const Account& account) {
    removeCutRecord(account);
    if (!exists(copyFile(account)))
        return;
    append(journalFile(account), without(recordsOf(copyFile(account)), pendingChanges(account)));
    removeFile(copyFile(account));
}

}  // namespace tavro::tools
