#include "http/control_pages.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "faults/fault_syntax.h"
#include "http/body_reader.h"

namespace tavro::service {

namespace {

bool isLoopback(const std::string& address) {
    return address.rfind("127.", 0) == 0 || address == "::1" ||
           address.rfind("::ffff:127.", 0) == 0;
}

std::string statusOf(DeviceApi& api, const FaultQueue& faults, const RequestLog& log) {
    const auto items = api.books();
    const auto present =
        std::count_if(items.begin(), items.end(), [](const Book& book) { return !book.deleted; });
    nlohmann::ordered_json json = {{"books", present}, {"requests", log.requests().size()}};
    json["faults"] = nlohmann::json::array();
    for (const NamedFault& fault : faults.pending())
        json["faults"].push_back(nlohmann::ordered_json::parse(faultToJson(fault)));
    return json.dump() + "\n";
}

}  // namespace

void addControlPages(httplib::Server& server, DeviceApi& api, FaultQueue& faults,
                     const RequestLog& log, std::size_t maximumBody) {
    const auto sendStatus = [&api, &faults, &log](const auto&, auto& response) {
        response.set_content(statusOf(api, faults, log), "application/json");
    };
    server.Get("/control/status", sendStatus);
    server.Delete("/control/faults", [&faults, sendStatus](const auto& request, auto& response) {
        faults.clear();
        sendStatus(request, response);
    });
    server.Post("/control/faults", [&faults, sendStatus, maximumBody](
                                       const auto& request, auto& response, const auto& reader) {
        try {
            auto [operation, fault] = faultFromJson(readBody(request, reader, maximumBody));
            faults.add(operation, std::move(fault));
            sendStatus(request, response);
        } catch (const std::invalid_argument& error) {
            response.status = 400;
            response.set_content(error.what(), "text/plain; charset=utf-8");
        }
    });
}

bool mayControl(const httplib::Request& request) {
    // A web page cannot send JSON to another site unasked.
    const bool json = request.get_header_value("Content-Type") == "application/json";
    return isLoopback(request.remote_addr) && (request.method != "POST" || json);
}

}  // namespace tavro::service
