#pragma once

#include <httplib.h>

#include <cstddef>

#include "api/device_api.h"
#include "faults/fault_queue.h"
#include "http/request_log.h"

namespace tavro::service {

/// Adds the pages at which a developer sets and clears faults and asks how the service does. Bodies
/// may have up to `maximumBody` bytes. All must outlive the server's last request.
void addControlPages(httplib::Server& server, DeviceApi& api, FaultQueue& faults,
                     const RequestLog& log, std::size_t maximumBody);

/// Whether `request` may use the control pages: only this machine may make the service misbehave,
/// and no web page that its browser shows.
bool mayControl(const httplib::Request& request);

}  // namespace tavro::service
