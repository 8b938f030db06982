#pragma once

#include <httplib.h>

#include <cstddef>
#include <optional>

#include "api/answer.h"
#include "faults/fault.h"

namespace tavro::service {

/// Changes `answer` to what `fault` makes of it.
void distort(Answer& answer, const Fault& fault);

/// Whether `fault` does anything at all.
bool isFaulty(const Fault& fault);

/// Hands `answer` to the HTTP library, which sends it piece by piece. After `cut` bytes of its body
/// it ends the connection, if that is set.
void send(const Answer& answer, std::optional<std::size_t> cut, httplib::Response& response);

}  // namespace tavro::service
