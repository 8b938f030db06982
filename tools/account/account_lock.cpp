#include "account/account_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

#include "account/files.h"
#include "account/journal.h"
#include "account/kept_book_map.h"
#include "account/own_files.h"
#include "platform/account_files.h"
#include "posix/atomic_file.h"

namespace tavro::tools {

namespace {

/// The open file `path`, locked for this process. Throws AlreadyRunning, Failure.
posix::FileDescriptor locked(const std::string& path) {
    posix::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!file)
        throwCannotWrite(path, errno);
    if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0)
        return file;
    if (errno == EWOULDBLOCK)
        throw AlreadyRunning();
    throwCannotLock(path, errno);
}

}  // namespace

AccountLock::AccountLock(const Account& account)
    : file_(locked(account.file(own_files::account_lock))) {
    for (const std::string& folder :
         {account.folder(), account.file(account_files::covers), account.downloadFolder().string()})
        posix::removeAbandonedReplacements(folder);
    restoreJournal(account);  // first: what the journal names, the book map keeps
    repairAndCopyBookMap(account);
}

}  // namespace tavro::tools
