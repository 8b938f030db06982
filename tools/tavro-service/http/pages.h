#pragma once

#include <cstddef>

#include "api/device_api.h"
#include "faults/fault.h"
#include "http/http_server.h"
#include "http/own_names.h"
#include "http/request_log.h"

namespace tavro::service {

/// What pages work with. The references must outlive the server's last request.
struct PageContext {
    HttpServer& server;
    DeviceApi& api;
    FaultQueue& faults;
    RequestLog& log;
    const OwnNames& names;
    std::size_t maximumBody;  ///< largest request body, in bytes
    bool entityReferences;    ///< escape texts with entity references, not with CDATA
};

/// Adds the pages at which devices ask for the operations of the API.
void addDevicePages(const PageContext& context);

/// Adds all other pages and what holds for every request; the last, for unknown pages end here. A
/// developer sets and clears faults there and asks how the service does; answers point to covers,
/// shop and terms. The log is told of unknown pages and of failures.
void addServicePages(const PageContext& context);

}  // namespace tavro::service
