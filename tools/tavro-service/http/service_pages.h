#pragma once

#include <httplib.h>

#include <cstddef>

#include "api/device_api.h"
#include "faults/fault.h"
#include "http/request_log.h"

namespace tavro::service {

/// Adds the pages that no device asks for as an operation, and what holds for every request; after
/// all other pages, for unknown ones end here. All must outlive the server's last request.
///
/// There are pages at which a developer sets and clears faults and asks how the service does, and
/// those that answers point to: covers, shop and terms. Bodies may have up to `maximumBody` bytes.
/// `log` is told of unknown pages and of failures.
void addServicePages(httplib::Server& server, DeviceApi& api, FaultQueue& faults, RequestLog& log,
                     std::size_t maximumBody);

}  // namespace tavro::service
