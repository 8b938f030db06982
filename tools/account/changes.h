#pragma once

#include <string>
#include <vector>

#include "account/account.h"
#include "account/journal_backup.h"
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
    std::vector<Change> kept;      ///< still pending
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
/// Throws Failure when journal or book map cannot be written; the copy then stays, for
/// `restoreJournal`. To be called under the account's lock.
ReplayResult replayChanges(Tavro& session, const Account& account);

}  // namespace tavro::tools
