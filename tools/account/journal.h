#pragma once

#include <ctime>
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

/// The journal during a replay, which has the library replay one change at a time. What is not in
/// the journal meanwhile lies in a copy of it, so that a killed replay, and one that finds the disk
/// full, loses nothing; `restoreJournal` puts it back. Every function throws Failure.
class ReplayJournal {
public:
    /// Copies the journal. To be made, and used, under the account's lock.
    explicit ReplayJournal(const Account& account);

    /// The changes that were in the journal, oldest first.
    const std::vector<Change>& changes() const { return changes_; }

    /// Makes `change` the only one in the journal. What other programs have appended meanwhile goes
    /// into the copy.
    void isolate(const Change& change);

    /// Notes that the library has taken the isolated change out of the journal for good. What the
    /// journal holds now was appended meanwhile, unless the library could not empty it.
    void settle();

    /// Makes `kept`, and what was appended meanwhile, the content of the journal.
    void putBack(const std::vector<Change>& kept);

    /// Removes the copy, once everything that the replay has done is on the disk.
    void discardCopy() const;

private:
    void noteArrivals();

    const Account& account_;
    std::vector<Change> changes_;
    std::vector<Change> expected_;  // in the journal, as far as this object knows
    timespec isolated_{};           // when the journal was written for the isolated change
    std::vector<Change> arrived_;   // appended by other programs since the copy was made
};

/// Takes what is left of a record that was cut by a full disk or by the end of its writer off the
/// end of the journal: a record behind it would be lost with it. Waits for a writer. Throws
/// Failure.
void removeCutRecord(const Account& account);

/// Removes a cut record and puts the changes of a copy that a replay left behind back into the
/// journal, those that are not there. What had reached the service is harmless: its old name is no
/// longer in the book map, so the next replay drops it. To be called under the account's lock.
/// Throws Failure, with the copy still there, when the journal cannot be written.
void restoreJournal(const Account& account);

}  // namespace tavro::tools
