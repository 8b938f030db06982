#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>

#include "books/recent_covers.h"
#include "http/body_reader.h"
#include "http/pages.h"
#include "page/page.h"
#include "state/secrets.h"

namespace tavro::service {

namespace {

bool isLoopback(const std::string& address) {
    return address.rfind("127.", 0) == 0 || address == "::1" ||
           address.rfind("::ffff:127.", 0) == 0;
}

/// Only this machine may make the service misbehave, and no web page that its browser shows.
bool mayControl(const httplib::Request& request) {
    // A web page cannot send JSON to another site unasked.
    const bool json = request.get_header_value("Content-Type") == "application/json";
    return isLoopback(request.remote_addr) && (request.method != "POST" || json);
}

/// Covers, with the right to read them.
struct Covers {
    std::mutex mutex;
    RecentCovers recent;
};

void sendCover(DeviceApi& api, RecentCovers& covers, const httplib::Request& request,
               httplib::Response& response) {
    const long long id = std::stoll(request.matches[1]);
    const auto book = api.findBook(static_cast<int>(std::min<long long>(id, INT32_MAX)));
    response.status = 404;
    if (!book || !book->hasCover)
        return;
    const std::string tag = "\"" + book->version + "\"";
    response.set_header("ETag", tag);
    response.set_header("Cache-Control", "no-cache");  // but to be asked for with the tag
    if (request.get_header_value("If-None-Match") == tag) {
        response.status = 304;
        return;
    }
    const Cover& cover = covers.of(book->original, book->version);
    if (cover.bytes.empty())
        return;
    response.status = 200;
    response.set_content(cover.bytes, cover.type);
}

/// Sends the page for people. It may fetch from this service only, and runs and shows only what
/// bears this answer's own mark: whatever a book says of itself stays text.
void sendPage(httplib::Response& response) {
    const std::string nonce = randomToken();
    response.set_header("Content-Security-Policy",
                        "default-src 'none'; script-src 'nonce-" + nonce + "'; style-src 'nonce-" +
                            nonce +
                            "'; img-src 'self'; connect-src 'self'; frame-ancestors 'none';"
                            " base-uri 'none'; form-action 'none'");
    response.set_header("Cache-Control", "no-store");
    response.set_header("Cross-Origin-Opener-Policy", "same-origin");
    response.set_content(page(nonce), "text/html; charset=utf-8");
}

void addPublicPages(httplib::Server& server, DeviceApi& api) {
    // One after the other: whoever asks for many at once must not have many books unpacked at once.
    const auto covers = std::make_shared<Covers>();
    server.Get("/covers/(\\d{1,10})", [&api, covers](const auto& request, auto& response) {
        const std::lock_guard lock(covers->mutex);
        sendCover(api, covers->recent, request, response);
    });
    server.Get("/", [](const auto&, auto& response) { sendPage(response); });
    server.Get("/icon.svg", [](const auto&, auto& response) {
        response.set_content(page_icon.data(), page_icon.size(), "image/svg+xml");
    });
    server.Get("/(shop|terms)", [](const auto&, auto& response) {
        response.set_content("A local stand-in of the Tavro service has nothing to sell.\n",
                             "text/plain; charset=utf-8");
    });
}

using Handled = httplib::Server::HandlerResponse;

/// Why `request` may not come from a page of another site or under another name; empty if it may.
std::string foreignness(const httplib::Request& request, const PageContext& context) {
    const int port = context.server.port();
    const std::string host = request.get_header_value("Host");
    if (request.get_header_value_count("Host") != 1 || !context.names.isHost(host, port))
        return "it is for the host \"" + host + "\", none of this service's names; see --host";
    const std::string origin = request.get_header_value("Origin");
    if (request.get_header_value_count("Origin") > 1 ||
        (request.has_header("Origin") && !context.names.isOrigin(origin, port)))
        return "it comes from a page of \"" + origin + "\"";
    // Browsers name no origin when a page embeds what lies elsewhere. Following a link is harmless.
    const std::string site = request.get_header_value("Sec-Fetch-Site");
    const bool link = request.get_header_value("Sec-Fetch-Dest") == "document";
    if (!site.empty() && site != "same-origin" && site != "none" && !link)
        return "it comes from a page of another site";
    return "";
}

/// Largest body of a request that is to have none, in bytes; the HTTP library keeps it in memory.
constexpr std::uint64_t largest_unread_body = 65536;

Handled refuse(const httplib::Request& request, httplib::Response& response,
               const PageContext& context) {
    // For browsers: take each answer for what it says it is, and for this site's own pages only.
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("Cross-Origin-Resource-Policy", "same-origin");
    const std::string reason = foreignness(request, context);
    if (!reason.empty())
        context.log.report("refused: " + request.method + " " + request.path + ": " + reason);
    if (!reason.empty() || (request.path.rfind("/control/", 0) == 0 && !mayControl(request)))
        response.status = 403;
    else if (request.method != "POST" && request.has_header("Transfer-Encoding"))
        response.status = 411;
    else if (request.method != "POST" &&
             request.get_header_value<std::uint64_t>("Content-Length") > largest_unread_body)
        response.status = 413;
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

void addRules(const PageContext& context) {
    httplib::Server& server = context.server.pages();
    RequestLog& log = context.log;
    server.set_payload_max_length(context.maximumBody);
    server.set_pre_routing_handler([context](const auto& request, auto& response) {
        return refuse(request, response, context);
    });
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
    addPublicPages(context.server.pages(), context.api);
    addRules(context);
}

}  // namespace tavro::service
