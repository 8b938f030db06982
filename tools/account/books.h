#pragma once

#include <map>
#include <string>
#include <vector>

#include "account/account.h"

namespace tavro::tools {

/// Names of the book files that lie in the download folder, by the item they belong to: of the
/// mapped ones, and of those that replace one and still have to be sent. The old file may be gone
/// then, and yet the book is not missing.
std::map<int, std::vector<std::string>> presentFiles(const Account& account);

/// What to try when the download folder is missing although books have been downloaded.
inline constexpr const char* missing_folder_advice =
    "insert the card that it lies on, or name another folder with 'tavroctl setup --folder'";

/// Sees that the download folder is there, and makes it for an account without books. Throws
/// Failure when it is missing although books have been downloaded, as when a card is not in: the
/// account's books would all be downloaded again.
void requireDownloadFolder(const Account& account);

}  // namespace tavro::tools
