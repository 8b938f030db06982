#pragma once

#include <stdexcept>

namespace tavro::service {

/// Thrown when a book cannot be read; `what` says why.
class BookError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace tavro::service
