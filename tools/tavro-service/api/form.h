#pragma once

#include <string>
#include <utility>
#include <vector>

#include "api/temporary_file.h"

namespace tavro::service {

/// A form as a device sends it, its file written to disk on the way in.
struct Form {
    /// Names and values of the parts in their order; the value of a file is its announced name.
    std::vector<std::pair<std::string, std::string>> fields;
    TemporaryFile file;           ///< content of the part "file"; none unless the form has one
    std::string fileContentType;  ///< of the part "file"

    /// Value of the first part called `name`; empty if there is none.
    std::string value(const std::string& name) const;
};

}  // namespace tavro::service
