#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "books/book_reader.h"
#include "faults/fault_syntax.h"
#include "http/body_reader.h"
#include "http/pages.h"

namespace tavro::service {

namespace {

bool isLoopback(const std::string& address) {
    return address.rfind("127.", 0) == 0 || address == "::1" ||
           address.rfind("::ffff:127.", 0) == 0;
}

std::string describe(const PageContext& context) {
    const auto items = context.api.books();
    const auto present =
        std::count_if(items.begin(), items.end(), [](const Book& book) { return !book.deleted; });
    nlohmann::ordered_json json = {{"books", present}, {"requests", context.log.requests().size()}};
    json["faults"] = nlohmann::json::array();
    for (const NamedFault& fault : context.faults.pending())
        json["faults"].push_back(nlohmann::ordered_json::parse(faultToJson(fault)));
    return json.dump() + "\n";
}

/// Only this machine may make the service misbehave, and no web page that its browser shows.
bool mayControl(const httplib::Request& request) {
    // A web page cannot send JSON to another site unasked.
    const bool json = request.get_header_value("Content-Type") == "application/json";
    return isLoopback(request.remote_addr) && (request.method != "POST" || json);
}

void addControlPages(const PageContext& context) {
    httplib::Server& server = context.server.pages();
    const auto sendStatus = [context](const auto&, auto& response) {
        response.set_content(describe(context), "application/json");
    };
    server.Get("/control/status", sendStatus);
    server.Delete("/control/faults", [context, sendStatus](const auto& request, auto& response) {
        context.faults.clear();
        sendStatus(request, response);
    });
    server.Post("/control/faults", [context, sendStatus](const auto& request, auto& response,
                                                         const auto& reader) {
        try {
            auto [operation, fault] = faultFromJson(readBody(request, reader, context.maximumBody));
            context.faults.add(operation, std::move(fault));
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

Handled refuse(const httplib::Request& request, httplib::Response& response) {
    if (request.path.rfind("/control/", 0) == 0 && !mayControl(request))
        response.status = 403;
    else if (request.method != "POST" && request.has_header("Transfer-Encoding"))
        response.status = 411;
    else
        return Handled::Unhandled;
    return Handled::Handled;
}

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

void addServicePages(const PageContext& context) {
    addControlPages(context);
    addPublicPages(context.server.pages(), context.api);
    addRules(context.server.pages(), context.log, context.maximumBody);
}

}  // namespace tavro::service
