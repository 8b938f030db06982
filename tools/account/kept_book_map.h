#pragma once

#include <string>

#include "account/account.h"
#include "account/book_map_copy.h"
#include "account/book_map_image.h"

namespace tavro::tools {

/// The book map of an account, with a copy from which it gets back what it loses: it is rewritten
/// in place and without a look at the outcome, so whoever is killed meanwhile, or finds the disk
/// full, leaves a part of it.
///
/// To be used under the account's lock. What others change in the map is seen by each call. Every
/// function throws Failure when the map or its copy cannot be read or written; what the copy held
/// then stays.
class KeptBookMap {
public:
    /// Gives books of the download folder the entries back that the map has lost since it was
    /// copied, and copies it.
    explicit KeptBookMap(const Account& account);

    /// Prepares for the library's next entry: does the same again if the map has changed.
    void prepare();

    /// Sees that the map has an entry of the file `name`, for the book `item`, besides those that
    /// it had when prepared, and writes it so where it has not.
    void require(const std::string& name, int item);

    /// Copies the entry that was required last.
    void copy(const std::string& name, int item);

private:
    void repairAndCopy();
    void tidy();

    const Account& account_;
    BookMapCopy copy_;
    BookMapImage map_;         // as far as this object knows
    bool isExpected_ = false;  // whether the map was so when an entry was last required
    bool isCopied_ = false;    // whether the copy has the same entries
};

/// Does for `account` what a new KeptBookMap does: after its lock was taken, and after each change
/// of the map.
inline void repairAndCopyBookMap(const Account& account) {
    KeptBookMap{account};
}

}  // namespace tavro::tools
