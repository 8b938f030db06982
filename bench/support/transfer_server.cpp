#include <httplib.h>

#include <algorithm>
#include <string>

#include "support/server_process.h"

namespace bench {

namespace {

/// Answers with as many bytes as the path of `request` says, a block after the other.
void giveBytes(const httplib::Request& request, httplib::Response& response) {
    static const std::string block(1 << 18, 'x');
    response.set_header("Content-Disposition", "attachment; filename=book");
    response.set_content_provider(
        std::stoul(request.matches[1]), "application/octet-stream",
        [](std::size_t /*offset*/, std::size_t left, httplib::DataSink& sink) {
            return sink.write(block.data(), std::min(left, block.size()));
        });
}

/// Counts the bytes of the files that come, and drops them.
void takeFiles(const httplib::Request& /*request*/, httplib::Response& response,
               const httplib::ContentReader& read) {
    std::size_t taken = 0;
    bool isFile = false;
    read(
        [&](const httplib::MultipartFormData& part) {
            isFile = !part.filename.empty();
            return true;
        },
        [&](const char* /*data*/, std::size_t size) {
            taken += isFile ? size : 0;
            return true;
        });
    response.set_content(std::to_string(taken), "text/plain");
}

}  // namespace

ServerProcess transferServer() {
    return ServerProcess([](const ServerProcess::Report& report) {
        httplib::Server server;
        server.set_keep_alive_max_count(1 << 30);
        server.set_tcp_nodelay(true);
        server.Post("/bytes/([0-9]+)", giveBytes);
        server.Post("/taken", takeFiles);
        report(server.bind_to_any_port("127.0.0.1"));
        server.listen_after_bind();
    });
}

}  // namespace bench
