#pragma once

#include <stdexcept>

#include "api/result.h"

namespace tavro::service {

/// Thrown when a request is refused.
class RequestError : public std::runtime_error {
public:
    /// Refuses it for the reason `result`, which lasts.
    explicit RequestError(const Result& result)
        : std::runtime_error(result.message), result_(result) {}

    /// What the answer carries.
    const Result& result() const { return result_; }

private:
    const Result& result_;
};

}  // namespace tavro::service
