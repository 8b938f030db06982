#include "account/account_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include "account/book_map.h"
#include "account/failure.h"
#include "account/files.h"
#include "account/journal.h"
#include "account/own_files.h"
#include "platform/account_files.h"
#include "posix/atomic_file.h"

namespace tavro::tools {

namespace {

int openLockFile(const Account& account) {
    return ::open(account.file(own_files::account_lock).c_str(), O_RDWR | O_CREAT | O_CLOEXEC,
                  0600);
}

}  // namespace

AccountLock::AccountLock(const Account& account) : file_(openLockFile(account)) {
    if (!file_)
        throwCannotWrite(account.file(own_files::account_lock));
    if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0)
        throw AlreadyRunning();
    for (const std::string& folder :
         {account.folder(), account.file(account_files::covers), account.downloadFolder().string()})
        posix::removeAbandonedReplacements(folder);
    restoreJournal(account);  // first: what the journal names, the book map keeps
    repairAndCopyBookMap(account);
}

}  // namespace tavro::tools
