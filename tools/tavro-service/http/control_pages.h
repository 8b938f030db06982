#pragma once

#include <httplib.h>

#include <cstddef>
#include <string>

#include "api/device_api.h"
#include "faults/fault_queue.h"
#include "http/request_log.h"

namespace tavro::service {

/// The pages at which a developer sets and clears faults and asks how the service does.
class ControlPages {
public:
    /// Adds the pages to `server`; bodies may have up to `maximumBody` bytes. All must outlive the
    /// object, and the object the server's last request.
    ControlPages(httplib::Server& server, DeviceApi& api, FaultQueue& faults, const RequestLog& log,
                 std::size_t maximumBody);

private:
    void addFault(const std::string& body, httplib::Response& response);
    void sendStatus(httplib::Response& response);

    DeviceApi& api_;
    FaultQueue& faults_;
    const RequestLog& log_;
};

/// Whether `request` may use the control pages: only this machine may make the service misbehave,
/// and no web page that its browser shows.
bool mayControl(const httplib::Request& request);

}  // namespace tavro::service
