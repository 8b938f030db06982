#pragma once

#include "account.h"
#include "posix/file_descriptor.h"

namespace reader {

/// The right to move the account's books, catalogue and changes, which one process has at a time:
/// two downloads of one book would write into the same partial file, and two replays would send
/// the same changes. It ends with the object, and with the process however that ends.
class AccountLock {
public:
    /// Takes the lock, an exclusive `flock` on a file of the configuration folder, without waiting
    /// for it, and puts changes back into the journal that a replay held when it was killed.
    /// Throws Failure when another process has the lock.
    explicit AccountLock(const Account& account);

private:
    posix::FileDescriptor file_;
};

}  // namespace reader
