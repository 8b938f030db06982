#pragma once

#include <chrono>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "account/account.h"
#include "account/downloads.h"
#include "account/round_record.h"
#include "tavro-sync/activity_log.h"
#include "tavro-sync/covers.h"
#include "tavro-sync/placeholders.h"
#include "tavro.h"

namespace tavro::tools {

/// One synchronisation round for the account of a device:
///
///     send the journalled changes      what cannot be sent stays in the journal
///         |
///     fetch the catalogue              refused or no answer: the round ends, nothing else changes
///         |
///     remove what the service deleted  files still in the journal are kept
///         |
///     announce what is missing         placeholders, download list
///         |
///     for each missing book:           a book that fails does not stop the others,
///         |                        unless the service is gone
///         cover, book file, then placeholder and list entry go
///         |
///     covers that other books lack
///
/// Each step leaves files from which the next round goes on, so the process may be ended at any
/// moment. Blocks the calling thread, and holds the account's lock meanwhile. How the round ended
/// is recorded (account/round_record.h), unless a log-out has taken the account away.
class SyncRound {
public:
    /// A round for `account` that tells `log` what it does; both must outlive it.
    SyncRound(const Account& account, const ActivityLog& log);

    /// Runs the round. @return whether everything came and went that should; throws Failure when
    /// there is nobody to synchronise for or no catalogue came, AlreadyRunning when another process
    /// is at work on the account.
    bool run();

private:
    /// Does what is due when `error` has ended the round, which `record` tells of.
    void endAs(const std::exception& error, const RoundRecord& record);
    void synchroniseWith(Tavro& session);
    void sendChanges(Tavro& session);
    void removeDeleted(const Tavro& session);
    void announce(const std::vector<BookDescription>& books);
    void downloadMissing(Tavro& session, const std::vector<BookDescription>& books);
    void download(Downloads& downloads, const BookDescription& book);

    /// Has the round ask for no more book: nobody answers, and each would wait for that anew.
    void giveUp();
    bool lacksCover(const BookDescription& book);
    void fetchCover(const BookDescription& book);
    void placeMissing();
    void updateList(bool now);
    void requireAccount() const;
    bool isStillLoggedIn() const;

    /// Removes what the round has left behind after a log-out took the account away.
    void cleanUp() const;
    void fail(const std::string& what);

    const Account& account_;
    const ActivityLog& log_;
    const std::string folder_;  ///< of the books; a log-out during the round takes its setting away
    const Placeholders placeholders_;
    Covers covers_;
    std::string sessionId_;  ///< a log-in during the round is another one's
    std::set<int> missing_;  ///< items still to be downloaded
    std::chrono::steady_clock::time_point listed_;
    std::vector<std::string> problems_;
    std::size_t downloaded_ = 0;
    bool isServiceGone_ = false;
};

}  // namespace tavro::tools
