#pragma once

#include <string>
#include <vector>

#include "account/failure.h"
#include "account/journal.h"
#include "console/output.h"
#include "tavro.h"

namespace tavro::tools {

/// `change` as a result.
Json asJson(const Change& change);

/// `changes` as a result.
Json asJson(const std::vector<Change>& changes);

/// Why the last upload of `session` failed, with what that means for the journal.
///
/// @param what what the person asked for, as "the upload failed".
Failure uploadFailure(const Tavro& session, const std::string& what);

}  // namespace tavro::tools
