#include "account/account_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include "account/book_map.h"
#include "account/failure.h"
#include "account/files.h"
#include "account/journal_backup.h"
#include "account/own_files.h"

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
    repairAndCopyBookMap(account);
    restoreJournal(account);
}

}  // namespace tavro::tools
