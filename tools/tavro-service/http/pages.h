#pragma once

#include <chrono>
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
    std::chrono::system_clock::time_point started = std::chrono::system_clock::now();
};

/// Adds the pages at which devices ask for the operations of the API.
void addDevicePages(const PageContext& context);

/// Adds the pages below /control/, at which a developer and tests set and clear faults, and ask
/// what the service has and what was asked of it.
void addControlPages(const PageContext& context);

/// Adds all other pages and what holds for every request; the last, for unknown pages end here: the
/// page for people, and the covers, the shop and the terms to which answers point. The log is told
/// of unknown pages and of failures.
void addServicePages(const PageContext& context);

}  // namespace tavro::service
