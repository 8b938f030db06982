#pragma once

#include <set>
#include <string>
#include <vector>

#include "account/account.h"

namespace tavro::tools {

/// What became of the files of books that the service lists as deleted.
struct DeletedFiles {
    std::vector<std::string> removed;
    std::vector<std::string> changed;  ///< kept: the journal has a change of them still to be sent
    std::vector<std::string> strange;  ///< kept: their names lead out of the download folder
    std::vector<std::string> stuck;    ///< cannot be removed, or are no files
};

/// Removes the files of the books `items` from the download folder `folder` and then from the book
/// map of `account`, in one operation on it. An interrupted call is made good by the next one. To
/// be called under the account's lock.
DeletedFiles removeBooks(const Account& account, const std::string& folder,
                         const std::set<int>& items);

}  // namespace tavro::tools
