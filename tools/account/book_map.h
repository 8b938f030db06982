#pragma once

#include <map>
#include <string>
#include <string_view>

#include "account/account.h"
#include "program/failure.h"

namespace tavro::tools {

/// Item ids by file name, as a book map has them.
using MappedFiles = std::map<std::string, int>;

/// The book map of `account`; empty when there is none yet.
MappedFiles mappedFiles(const Account& account);

/// Whether the file name `name`, which the service has chosen, leads out of the folder that it is
/// relative to.
bool leadsOut(const std::string& name);

/// Takes the entry of the file `name` out of the book map of `account`.
void forgetBook(const Account& account, const std::string& name);

/// Why nothing can be done with the file `name`: the book map has no entry of it.
Failure unknownToBookMap(const std::string& name);

/// Sees that the book map, which was `before`, holds `expected` now, and writes it so where it does
/// not: the library writes it in place and without a look at the outcome, and where one of its
/// writes fails but not the next, the file reads as other names and items. Entries that another
/// program has added meanwhile stay if their files are there. Throws Failure when the map cannot be
/// read or written.
void requireBookMap(const Account& account, const MappedFiles& before, MappedFiles expected);

/// Whether the file of the book map has just the bytes `content`. Throws Failure when it cannot be
/// read.
bool isBookMap(const Account& account, std::string_view content);

}  // namespace tavro::tools
