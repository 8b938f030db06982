#pragma once

#include <map>
#include <string>

#include "api/device_request.h"

namespace tavro::service {

/// Values of a request by the names of their elements or form fields.
using Values = std::map<std::string, std::string>;

/// Reads the values of `request`, whose XML must have exactly the elements of its operation, in
/// their order. Throws `RequestError` if it is malformed or a required value is empty.
Values readValues(const DeviceRequest& request);

}  // namespace tavro::service
