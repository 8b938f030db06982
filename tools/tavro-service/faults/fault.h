#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "api/operation.h"

namespace tavro::service {

/// What to do instead of, or around, the true answer; whatever is unset stays true.
///
/// The request is carried out all the same, unless `resultCode` is no success or the connection is
/// closed without an answer: then nothing changes in the state.
struct Fault {
    std::chrono::milliseconds delay{0};     ///< wait before the answer
    std::optional<std::string> resultCode;  ///< code of the answer's "Error" element
    std::optional<int> httpStatus;
    std::optional<std::string> body;      ///< exact bytes of the answer's body
    std::optional<std::size_t> cutAfter;  ///< announce all, send so many bytes, close
    bool malformed = false;               ///< a body that is not well-formed XML
    bool closeConnection = false;         ///< close without any answer
    /// A download: exactly this text after "filename=", or no such header if it is empty.
    std::optional<std::string> fileName;
    int times = 0;  ///< for the next so many requests; 0: until cleared
};

/// A fault and the operation that it is for.
using NamedFault = std::pair<Operation, Fault>;

}  // namespace tavro::service
