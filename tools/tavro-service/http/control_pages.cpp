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

}  // namespace

ControlPages::ControlPages(httplib::Server& server, DeviceApi& api, FaultQueue& faults,
                           const RequestLog& log, std::size_t maximumBody)
    : api_(api), faults_(faults), log_(log) {
    server.Post("/control/faults",
                [this, maximumBody](const auto& request, auto& response, const auto& reader) {
                    addFault(readBody(request, reader, maximumBody), response);
                });
    server.Delete("/control/faults", [this](const auto&, auto& response) {
        faults_.clear();
        sendStatus(response);
    });
    server.Get("/control/status", [this](const auto&, auto& response) { sendStatus(response); });
}

void ControlPages::addFault(const std::string& body, httplib::Response& response) {
    try {
        auto [operation, fault] = faultFromJson(body);
        faults_.add(operation, std::move(fault));
        sendStatus(response);
    } catch (const std::invalid_argument& error) {
        response.status = 400;
        response.set_content(error.what(), "text/plain; charset=utf-8");
    }
}

void ControlPages::sendStatus(httplib::Response& response) {
    const auto items = api_.books();
    const auto present =
        std::count_if(items.begin(), items.end(), [](const Book& book) { return !book.deleted; });
    nlohmann::ordered_json json = {{"books", present}, {"requests", log_.requests().size()}};
    json["faults"] = nlohmann::json::array();
    for (const NamedFault& fault : faults_.pending())
        json["faults"].push_back(nlohmann::ordered_json::parse(faultToJson(fault)));
    response.set_content(json.dump() + "\n", "application/json");
}

bool mayControl(const httplib::Request& request) {
    // A web page cannot send JSON to another site unasked.
    const bool json = request.get_header_value("Content-Type") == "application/json";
    return isLoopback(request.remote_addr) && (request.method != "POST" || json);
}

}  // namespace tavro::service
