#pragma once

#include <string>
#include <vector>

#include "bookdescription.h"
#include "tavro.h"

/// What the entry points for the library browser share: from a file of the sync folder to its book.
namespace browser_file {

/// Whether `path` begins like the sync folder of the account; every path does when it has none.
bool isInSyncFolder(const char* path);

/// The item id, as text, of the book whose file is `path`: what a placeholder file says, otherwise
/// what the book map of `session` has for the file's name. Empty when neither knows.
std::string itemKey(const std::string& path, Tavro& session);

/// The first of `books` with the item id `key`; null when none has it. The empty key is found in a
/// record without an item id and in a malformed one.
const BookDescription* findBook(const std::vector<BookDescription>& books, const std::string& key);

}  // namespace browser_file
