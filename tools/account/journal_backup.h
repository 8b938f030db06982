#pragma once

#include <string>
#include <vector>

#include "account/account.h"
#include "syncjournal.h"

namespace tavro::tools {

/// A book file that was replaced on the device.
using Change = SyncJournal::Record;

/// The changes in the journal that still have to reach the service, oldest first.
std::vector<Change> pendingChanges(const Account& account);

/// Makes `changes` the whole content of the journal. The library writes it without a look at the
/// outcome, so it is read again: throws Failure unless all changes are there.
void writeJournal(const Account& account, const std::vector<Change>& changes);

/// A copy of the journal, made before a replay: that empties the journal and has the changes in
/// memory only, so a killed replay would lose them, and one that finds the disk full as well.
class JournalBackup {
public:
    /// Copies the journal. Throws Failure.
    explicit JournalBackup(const Account& account);

    /// Removes the copy, once it is sure that the journal has again what was not sent. Without
    /// this call it stays, for `restoreJournal`.
    void discard() const;

private:
    std::string path_;
};

/// Puts the changes of a copy that a replay left behind back into the journal, those that are not
/// there. What had reached the service is harmless: its old name is no longer in the book map, so
/// the next replay drops it. To be called under the account's lock. Throws Failure, with the copy
/// still there, when the journal cannot be written.
void restoreJournal(const Account& account);

}  // namespace tavro::tools
