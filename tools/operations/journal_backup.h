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

/// A copy of the journal, made before a replay: that empties the journal and has the changes in
/// memory only, so a killed replay would lose them, and one that finds the disk full as well.
class JournalBackup {
public:
    /// Copies the journal. Throws `std::filesystem::filesystem_error`.
    explicit JournalBackup(const Account& account);

    /// Removes the copy, once it is sure that the journal has again what was not sent. Without
    /// this call it stays, for `restoreJournal`.
    void discard() const;

    /// Throws `std::filesystem::filesystem_error` unless the folder of the journal takes as many
    /// bytes as the copy has.
    void requireSpace() const;

private:
    std::string path_;
};

/// Puts the changes of a copy that a replay left behind back into the journal, those that are not
/// there. What had reached the service is harmless: its old name is no longer in the book map, so
/// the next replay drops it. To be called under the account's lock. Throws Failure, with the copy
/// still there, when the journal cannot be written.
void restoreJournal(const Account& account);

}  // namespace reader
