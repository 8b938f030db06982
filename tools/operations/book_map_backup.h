#pragma once

#include "account.h"

namespace reader {

/// Sees that the book map has lost nothing since the last call, and keeps a copy of it for the next
/// one. The map is rewritten in place and without a look at the outcome, so whoever is killed
/// meanwhile, or finds the disk full, leaves a part of it; books of the download folder that no
/// entry leads to any more get theirs back from the copy. To be called under the account's lock,
/// after it was taken and after each change.
///
/// Throws Failure when the map or its copy cannot be written; the copy then stays as it was.
void secureBookMap(const Account& account);

}  // namespace reader
