#pragma once

#include "account/account.h"
#include "posix/file_descriptor.h"

namespace tavro::tools {

/// The right to move the account's books, catalogue and changes, which one process has at a time:
/// two downloads of one book would write into the same partial file, and two replays would send
/// the same changes. It ends with the object, and with the process however that ends.
class AccountLock {
public:
    /// Takes the lock, an exclusive `flock` on a file of the configuration folder, without waiting
    /// for it, and puts back what a killed process left undone: entries of the book map, and
    /// changes that a replay held. Throws AlreadyRunning when another process has the lock, Failure
    /// when the account's files cannot be written.
    explicit AccountLock(const Account& account);

private:
    posix::FileDescriptor file_;
};

}  // namespace tavro::tools
