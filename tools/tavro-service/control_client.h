#pragma once

#include <string>

namespace tavro::service {

/// Speaks to a running service. Each function returns the body of the answer, and throws
/// `std::runtime_error` that says what to do when there is none or the service refuses.
class ControlClient {
public:
    /// For the service at `address`, as "http://127.0.0.1:1510".
    explicit ControlClient(std::string address);

    /// What GET has from `path`.
    std::string get(const std::string& path) const;

    /// What POST of the text `json` to `path` is answered.
    std::string post(const std::string& path, const std::string& json) const;

    /// What DELETE of `path` is answered.
    std::string remove(const std::string& path) const;

private:
    const std::string address_;
};

}  // namespace tavro::service
