#pragma once

#include <string>
#include <vector>

#include "account/journal.h"
#include "console/output.h"
#include "program/failure.h"
#include "tavro.h"

namespace tavro::tools {

/// `change` as a result.
Json asJson(const Change& change);

/// `changes` as a result.
Json asJson(const std::vector<Change>& changes);

/// `change` as the journal's commands print it: with whether it waits for a missing new file.
Json asJournalEntry(const Account& account, const Change& change);

/// What a person reads of a change that waits for its new file.
inline constexpr const char* set_aside = "set aside: the new file is not there";

/// Why the last upload of `session` failed, with what that means for the journal.
///
/// @param what what the person asked for, as "the upload failed".
Failure uploadFailure(const Tavro& session, const std::string& what);

}  // namespace tavro::tools
