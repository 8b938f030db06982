#pragma once

#include <httplib.h>

#include "api/device_api.h"

namespace tavro::service {

/// Adds the pages that answers point to: covers of the books, shop and terms. `api` must outlive
/// the server's last request.
void addPublicPages(httplib::Server& server, DeviceApi& api);

}  // namespace tavro::service
