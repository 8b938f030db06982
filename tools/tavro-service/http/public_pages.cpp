#include "http/public_pages.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "books/book_reader.h"

namespace tavro::service {

namespace {

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

}  // namespace

void addPublicPages(httplib::Server& server, DeviceApi& api) {
    server.Get("/covers/(\\d{1,10})",
               [&api](const auto& request, auto& response) { sendCover(api, request, response); });
    server.Get("/(shop|terms)", [](const auto&, auto& response) {
        response.set_content("A local stand-in of the Tavro service has nothing to sell.\n",
                             "text/plain; charset=utf-8");
    });
}

}  // namespace tavro::service
