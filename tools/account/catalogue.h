#pragma once

#include <string>
#include <vector>

#include "account/account.h"
#include "tavro.h"

namespace tavro::tools {

/// Fetches and saves the catalogue. The saved one stays when the service refuses.
void synchronise(Tavro& session, const Account& account);

/// The books of the last catalogue: `Tavro::getAddedBooks`, which also answers with none when it
/// cannot read the saved one. Throws Failure then.
const std::vector<BookDescription>& catalogueOf(const Tavro& session, const Account& account);

/// Whether a catalogue has ever been fetched for `account`.
bool isSynchronised(const Account& account);

/// What to tell where the catalogue of `account` has no book.
std::string whyNoBooks(const Account& account);

/// The item ID of `book` as the book map has it; 0 where the text is no number.
int itemNumber(const BookDescription& book);

/// Whether `book` has an item ID that the book map can hold.
bool hasItemNumber(const BookDescription& book);

}  // namespace tavro::tools
