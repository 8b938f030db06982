#pragma once

#include <string>

#include "http/control_json.h"

namespace tavro::service {

/// A request, as `toJson` tells of it, as a line for people: time, operation, code, HTTP status,
/// size, duration, item. Throws `std::exception` if `request` is none.
std::string readableLine(const Json& request);

/// The same as one line of JSON.
std::string jsonLine(const Json& request);

}  // namespace tavro::service
