#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace tavro::tools {

/// Why something did not happen, in words for the person who asked for it, and what to try.
class Failure : public std::runtime_error {
public:
    /// `what` completes "PROGRAM: ..."; `toTry` completes "Try: ..." and may be empty.
    explicit Failure(const std::string& what, std::string toTry = {})
        : runtime_error(what), advice(std::move(toTry)) {}

    std::string advice;   ///< what to try; may be empty
    std::string code;     ///< the service's result code; empty unless the service gave one
    std::string message;  ///< the service's explanation; may be empty
};

/// A command given in a way that cannot work; the program ends with status 2.
class UsageError : public std::runtime_error {
    using runtime_error::runtime_error;
};

}  // namespace tavro::tools
