#pragma once

#include <httplib.h>

#include <cstddef>

#include "api/device_api.h"
#include "api/operation.h"
#include "faults/fault.h"
#include "http/http_server.h"
#include "http/request_log.h"

namespace tavro::service {

/// The pages at which devices ask for the operations of the API.
class DevicePages {
public:
    /// How requests are read and answered.
    struct Settings {
        std::size_t maximumBody;  ///< largest request body, in bytes
        bool entityReferences;    ///< escape texts with entity references, not with CDATA
    };

    /// Adds the pages to `server`. All but `settings` must outlive the object, and the object the
    /// server's last request.
    DevicePages(HttpServer& server, DeviceApi& api, FaultQueue& faults, RequestLog& log,
                Settings settings);

private:
    void handle(Operation operation, const httplib::Request& request, httplib::Response& response,
                const httplib::ContentReader& reader);
    DeviceResponse answer(Request& entry, const httplib::Request& request,
                          const httplib::ContentReader& reader, const Fault& fault);
    DeviceRequest receive(Operation operation, const httplib::Request& request,
                          const httplib::ContentReader& reader) const;

    HttpServer& server_;
    DeviceApi& api_;
    FaultQueue& faults_;
    RequestLog& log_;
    const Settings settings_;
};

}  // namespace tavro::service
