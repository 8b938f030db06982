#include "http/rules.h"

#include <algorithm>
#include <exception>

#include "api/result.h"
#include "http/body_reader.h"
#include "http/control_pages.h"

namespace tavro::service {

namespace {

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

}  // namespace

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

}  // namespace tavro::service
