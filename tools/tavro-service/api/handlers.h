#pragma once

#include "api/call.h"
#include "api/device_response.h"

namespace tavro::service {

// What the operations do, one function for each. Each answers a request, or throws `RequestError`
// when it is to be refused and other exceptions when the service itself fails.

DeviceResponse registerDevice(Call& call);
DeviceResponse createUser(Call& call);
DeviceResponse loginUser(Call& call);
DeviceResponse forgetPassword(Call& call);
DeviceResponse getShopUrl(Call& call);
DeviceResponse synchronise(Call& call);
DeviceResponse uploadContent(Call& call);
DeviceResponse downloadContent(Call& call);

}  // namespace tavro::service
