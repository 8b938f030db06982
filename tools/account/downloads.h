#pragma once

#include <string>

#include "account/account.h"
#include "account/kept_book_map.h"
#include "posix/file_descriptor.h"
#include "tavro.h"

namespace tavro::tools {

/// Downloads books for an account, one after the other. To be made, and used, under the account's
/// lock.
class Downloads {
public:
    /// Downloads of `session` for `account`; both must outlive it. Throws Failure when the book map
    /// cannot be read or written.
    Downloads(Tavro& session, const Account& account);

    /// Downloads `book`. @return the file's name in the download folder, where it now lies. Throws
    /// Failure; the next book can be tried then.
    std::string fetch(const BookDescription& book);

private:
    bool isAccountGone() const;
    void requireAccount() const;
    void discard(const std::string& name) const;
    void recordOrRemove(const std::string& name, int item);
    void copy(const std::string& name, int item);

    Tavro& session_;
    const Account& account_;
    KeptBookMap map_;
    posix::FileDescriptor lockFile_;  // which goes with the account
};

}  // namespace tavro::tools
