#pragma once

#include <string>
#include <vector>

#include "account.h"
#include "syncjournal.h"

namespace reader {

/// The changes in the journal that still have to reach the service, oldest first. Takes none.
std::vector<SyncJournal::Record> pendingChanges(const Account& account);

/// Takes one record with the names of `wanted` out of `records`; false if there is none.
bool take(std::vector<SyncJournal::Record>& records, const SyncJournal::Record& wanted);

/// A copy of the journal for as long as the object lives. A replay empties the journal and has the
/// changes in memory only, so without the copy a killed replay would lose them.
class JournalBackup {
public:
    /// Copies the journal. Throws `std::filesystem::filesystem_error`.
    explicit JournalBackup(const Account& account);

    /// Removes the copy: the journal has again what was not sent.
    ~JournalBackup();
    JournalBackup(const JournalBackup&) = delete;
    JournalBackup& operator=(const JournalBackup&) = delete;

private:
    std::string path_;
};

/// Puts the changes of a copy that a killed replay left behind back into the journal, those that
/// are not there. What had reached the service is harmless: its old name is no longer in the book
/// map, so the next replay drops it. To be called under the account's lock.
void restoreJournal(const Account& account);

}  // namespace reader
