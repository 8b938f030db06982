#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "api/operation.h"
#include "posix/temporary_file.h"

namespace tavro::service {

/// A multipart form, its file written to disk on the way in.
struct Form {
    /// Names and values of the parts in their order; the value of a file is its announced name.
    std::vector<std::pair<std::string, std::string>> fields;
    posix::TemporaryFile file;    ///< content of the part "file"; none unless the form has one
    std::string fileContentType;  ///< of the part "file"
};

/// A request of a device as it came over the line.
struct DeviceRequest {
    Operation operation;
    std::string baseUrl;  ///< address of this service as the device knows it
    std::string body;     ///< XML; empty for a form
    Form form;            ///< empty for XML
};

/// Values of a request by the names of their elements or form fields.
using Values = std::map<std::string, std::string>;

/// Reads the values of `request`, whose XML must have exactly the elements of its operation, in
/// their order. Throws `RequestError` if it is malformed or a required value is empty.
Values readValues(const DeviceRequest& request);

}  // namespace tavro::service
