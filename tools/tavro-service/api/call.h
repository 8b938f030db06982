#pragma once

#include <optional>
#include <string>
#include <utility>

#include "api/device_request.h"
#include "api/request_values.h"
#include "state/accounts.h"
#include "state/catalogue.h"

namespace tavro::service {

/// Identifier and password of whoever may register devices.
using Consumer = std::pair<std::string, std::string>;

/// One request with its values, and the state on which it is carried out.
class Call {
public:
    /// Reads the values of `request`. Throws `RequestError`. Everything must outlive the object.
    Call(DeviceRequest& request, Accounts& accounts, Catalogue& catalogue,
         const std::optional<Consumer>& consumer);

    /// Value of the field `name` of the operation.
    const std::string& value(const char* name) const { return values_.at(name); }

    /// Throws `RequestError` if only another consumer may ask.
    void requireConsumer() const;

    /// The device that was given the request's token. Throws `RequestError` if none was.
    std::string requireDevice() const;

    /// Throws `RequestError` if the session in the field `name` is none of the token's device.
    void requireSession(const char* name) const;

    DeviceRequest& request;
    Accounts& accounts;
    Catalogue& catalogue;

private:
    const std::optional<Consumer>& consumer_;
    const Values values_;
};

}  // namespace tavro::service
