#pragma once

#include <optional>
#include <string>
#include <utility>

#include "api/device_request.h"
#include "api/device_response.h"
#include "state/accounts.h"
#include "state/catalogue.h"

namespace tavro::service {

/// Identifier and password of whoever may register devices.
using Consumer = std::pair<std::string, std::string>;

/// One request with its values, and the state on which it is carried out.
struct Call {
    DeviceRequest& request;
    const Values values;
    Accounts& accounts;
    Catalogue& catalogue;
    const std::optional<Consumer>& consumer;  ///< the only one, if set

    /// Value of the field `name` of the operation.
    const std::string& value(const char* name) const { return values.at(name); }

    /// Throws `RequestError` if only another consumer may ask.
    void requireConsumer() const;

    /// The device that was given the request's token. Throws `RequestError` if none was.
    std::string requireDevice() const;

    /// Throws `RequestError` if the session in the field `name` is none of the token's device.
    void requireSession(const char* name) const;
};

// What the operations do. Each answers a request, or throws `RequestError` when it is to be refused
// and other exceptions when the service itself fails.

DeviceResponse registerDevice(Call& call);
DeviceResponse createUser(Call& call);
DeviceResponse loginUser(Call& call);
DeviceResponse forgetPassword(Call& call);
DeviceResponse getShopUrl(Call& call);
DeviceResponse synchronise(Call& call);
DeviceResponse uploadContent(Call& call);
DeviceResponse downloadContent(Call& call);

}  // namespace tavro::service
