#include "http/service_pages.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>

#include "api/result.h"
#include "books/book_reader.h"
#include "faults/fault_syntax.h"
#include "http/body_reader.h"

namespace tavro::service {

namespace {

bool isLoopback(const std::string& address) {
    return address.rfind("127.", 0) == 0 || address == "::1" ||
           address.rfind("::ffff:127.", 0) == 0;
}

std::string describe(DeviceApi& api, const FaultQueue& faults, const RequestLog& log) {
    const auto items = api.books();
    const auto present =
        std::count_if(items.begin(), items.end(), [](const Book& book) { return !book.deleted; });
    nlohmann::ordered_json json = {{"books", present}, {"requests", log.requests().size()}};
    json["faults"] = nlohmann::json::array();
    for (const NamedFault& fault : faults.pending())
        json["faults"].push_back(nlohmann::ordered_json::parse(faultToJson(fault)));
    return json.dump() + "\n";
}

/// Only this machine may make the service misbehave, and no web page that its browser shows.
bool mayControl(const httplib::Request& request) {
    // A web page cannot send JSON to another site unasked.
    const bool json = request.get_header_value("Content-Type") == "application/json";
    return isLoopback(request.remote_addr) && (request.method != "POST" || json);
}

void addControlPages(httplib::Server& server, DeviceApi& api, FaultQueue& faults,
                     const RequestLog& log, std::size_t maximumBody) {
    const auto sendStatus = [&api, &faults, &log](const auto&, auto& response) {
        response.set_content(describe(api, faults, log), "application/json");
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

void sendCover(DeviceApi& api, const httplib::Request& request, httplib::Response& response) {
    const long long id = std::stoll(request.matches[1]);
    const auto book = api.findBook(static_cast<int>(std::min<long long>(id, INT32_MAX)));
    response.status = 404;
    if (!book || !book->hasCover)
        return;
    const BookDetails details = readBook(book->original);
    if (details.cover.empty())
        return;
    response.status = 200;
    response.set_content(details.cover, details.coverType);
}

void addPublicPages(httplib::Server& server, DeviceApi& api) {
    server.Get("/covers/(\\d{1,10})",
               [&api](const auto& request, auto& response) { sendCover(api, request, response); });
    server.Get("/(shop|terms)", [](const auto&, auto& response) {
        response.set_content("A local stand-in of the Tavro service has nothing to sell.\n",
                             "text/plain; charset=utf-8");
    });
}

using Handled = httplib::Server::HandlerResponse;

/// Refuses what no page is to see.
Handled refuse(const httplib::Request& request, httplib::Response& response) {
    if (request.path.rfind("/control/", 0) == 0 && !mayControl(request))
        response.status = 403;
    else if (request.method != "POST" && request.has_header("Transfer-Encoding"))
        response.status = 411;
    else
        return Handled::Unhandled;
    return Handled::Handled;
}

/// The HTTP status for the exception `problem` of a page.
int statusOf(const httplib::Request& request, const std::exception_ptr& problem, RequestLog& log) {
    try {
        std::rethrow_exception(problem);
    } catch (const RequestError& error) {
        return std::max(error.result().status, 400);
    } catch (const std::exception& error) {
        log.report(request.path + ": " + error.what());
        return 500;
    }
}

void addRules(httplib::Server& server, RequestLog& log, std::size_t maximumBody) {
    server.set_payload_max_length(maximumBody);
    server.set_pre_routing_handler(refuse);
    server.set_exception_handler([&log](const auto& request, auto& response, auto problem) {
        response.status = statusOf(request, problem, log);
    });
    server.Post(".*", [&log](const auto& request, auto& response, const auto& reader) {
        discardBody(request, reader);
        log.report("there is no such page: POST " + request.path);
        response.status = 404;
    });
}

}  // namespace

void addServicePages(httplib::Server& server, DeviceApi& api, FaultQueue& faults, RequestLog& log,
                     std::size_t maximumBody) {
    addControlPages(server, api, faults, log, maximumBody);
    addPublicPages(server, api);
    addRules(server, log, maximumBody);
}

}  // namespace tavro::service
