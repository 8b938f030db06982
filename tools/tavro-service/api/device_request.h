#pragma once

#include <map>
#include <string>

#include "api/operation.h"

namespace tavro::service {

/// Values of a request by their element or form field names.
using Values = std::map<std::string, std::string>;

/// Reads the XML `body` of a request of the device API. Its elements must be exactly those of
/// `operation`, in their order. Throws `Refusal` if it is malformed or a required value is empty.
Values readRequest(Operation operation, const std::string& body);

}  // namespace tavro::service
