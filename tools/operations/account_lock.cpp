#include "account_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include "atomic_file.h"
#include "book_map_backup.h"
#include "failure.h"
#include "journal_backup.h"

namespace reader {

namespace {

constexpr const char* lock_file = ".tavro_sync_lock";

int openLockFile(const Account& account) {
    return ::open(account.file(lock_file).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
}

}  // namespace

AccountLock::AccountLock(const Account& account) : file_(openLockFile(account)) {
    if (!file_)
        throwCannotWrite(account.file(lock_file));
    if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0)
        throw AlreadyRunning();
    secureBookMap(account);
    restoreJournal(account);
}

}  // namespace reader
