#pragma once

#include "account/account.h"
#include "posix/file_descriptor.h"
#include "program/failure.h"

namespace tavro::tools {

/// Another process is at work on the account.
class AlreadyRunning : public Failure {
public:
    AlreadyRunning()
        : Failure("another synchronisation of this account is running",
                  "run the same command again when it has ended") {}
};

/// The right to move the account's books, catalogue and changes, which one process has at a time:
/// two downloads of one book would write into the same partial file, and two replays would send
/// the same changes. It ends with the object, and with the process however that ends.
class AccountLock {
public:
    /// Takes the lock, an exclusive `flock` on a file of the configuration folder, without waiting
    /// for it, removes the temporary files of killed processes and puts back what these left
    /// undone: changes that a replay held, and entries of the book map. Throws AlreadyRunning when
    /// another process has the lock, Failure when the account's files cannot be written.
    explicit AccountLock(const Account& account);

private:
    posix::FileDescriptor file_;
};

}  // namespace tavro::tools
