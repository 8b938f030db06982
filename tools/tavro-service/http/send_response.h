#pragma once

#include <httplib.h>

#include <cstddef>
#include <optional>

#include "api/content.h"
#include "api/device_response.h"

namespace tavro::service {

/// Hands `answer` with the body `body` to the HTTP library as `response`, which sends it piece by
/// piece. After `cut` bytes of the body it ends the connection, if that is set.
void send(const DeviceResponse& answer, const Content& body, std::optional<std::size_t> cut,
          httplib::Response& response);

}  // namespace tavro::service
