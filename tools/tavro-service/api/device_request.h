#pragma once

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

    /// Value of the first part called `name`; empty if there is none.
    std::string value(const std::string& name) const;
};

/// A request of a device as it came over the line.
struct DeviceRequest {
    Operation operation;
    std::string baseUrl;  ///< address of this service as the device knows it
    std::string body;     ///< XML; empty for a form
    Form form;            ///< empty for XML
};

}  // namespace tavro::service
