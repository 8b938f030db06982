#pragma once

#include <functional>
#include <string>
#include <vector>

#include "account/account.h"
#include "account/journal.h"
#include "tavro.h"

namespace tavro::tools {

/// Journals that the mapped file `oldName` was replaced by the file `newName` of the download
/// folder, after trying to upload that if `upload` is set, with the library's pauses.
/// @return the journalled change; its flag tells whether it was uploaded. Throws Failure.
Change replaceBook(Tavro& session, const Account& account, const std::string& oldName,
                   const std::string& newName, bool upload);

/// What a replay did with the changes that were pending.
struct ReplayResult {
    std::vector<Change> uploaded;  ///< have reached the service, now or earlier
    std::vector<Change> dropped;   ///< old name unknown to the book map
    std::vector<Change> kept;      ///< still pending: the service has not taken them
    std::vector<Change> waiting;   ///< still pending, and not tried: their new files are missing
};

/// Uploads the pending changes, with the library's pauses after failed attempts:
///
///     copy the journal                  from here on nothing can get lost
///         |
///     for each change, newest first:    the library replays a journal that holds this one only,
///         |                             so that its answers tell what became of it
///     put back what was not sent
///         |
///     remove the copy
///
/// A change whose new file is missing would only cost its attempts and pauses, so it is not tried.
/// `beginning` is told each change when its turn comes.
/// Throws Failure when journal or book map cannot be read or written; the copy then stays, for
/// `restoreJournal`. To be called under the account's lock.
ReplayResult replayChanges(
    Tavro& session, const Account& account,
    const std::function<void(const Change&)>& beginning = [](const Change&) {});

/// Whether a replay would not try `change`, because its new file is missing.
bool isWaitingForFile(const Account& account, const Change& change);

/// Takes all changes of the file `oldName` out of the journal: the service keeps what it has.
/// @return the changes. Throws Failure, also when there is none. To be called under the account's
/// lock.
std::vector<Change> dropChanges(const Account& account, const std::string& oldName);

}  // namespace tavro::tools
