#pragma once

#include <string>

#include "http/request_log.h"

namespace tavro::service {

/// `request` as a line for people: time, operation, code, HTTP status, size, duration, item. No
/// password, token or session is among it.
std::string readableLine(const Request& request);

/// The same as one line of JSON.
std::string jsonLine(const Request& request);

}  // namespace tavro::service
