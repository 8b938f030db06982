#pragma once

#include <httplib.h>

#include <chrono>
#include <future>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace tavro::service {

/// The HTTP library's server, with connections of its own.
class PageServer : public httplib::Server {
public:
    /// Ends connections that keep it waiting for longer than `patience`; see `Connection`.
    explicit PageServer(std::chrono::milliseconds patience);

    /// Lets many clients wait to be accepted, not only the five that the HTTP library lets.
    void lengthenQueue() const { ::listen(svr_sock_, SOMAXCONN); }

    /// Shuts down all connections that are open. Whoever reads or writes there sees the end.
    void shutDownConnections();

    /// Shuts down the connection whose request the calling thread answers.
    void shutDownConnection();

private:
    bool process_and_close_socket(socket_t socket) override;

    const std::chrono::milliseconds patience_;
    std::mutex mutex_;  // of the next one
    std::map<std::thread::id, int> sockets_;
};

/// An HTTP server on threads of its own, which carries one request for each connection.
class HttpServer {
public:
    /// A server for `address` and `port` (0: a free one) that does not listen yet. It ends
    /// connections that keep it waiting for longer than `patience`; see `Connection`.
    HttpServer(std::string address, int port, std::chrono::milliseconds patience)
        : address_(std::move(address)), port_(port), server_(patience) {}

    /// Stops.
    ~HttpServer() { stop(); }
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// The server to which pages and rules are added before it listens.
    httplib::Server& pages() { return server_; }

    /// Listens; ready when this returns. Throws `std::runtime_error` that says what to do.
    void listen();

    /// Stops listening, cuts the connections that are open and returns when all threads have ended.
    void stop();

    /// Ends the connection whose request the calling thread answers, without an answer.
    void shutDownConnection() { server_.shutDownConnection(); }

    /// The port on which it listens.
    int port() const { return port_; }

    /// Its address, as "http://127.0.0.1:1510".
    std::string url() const;

private:
    void bind();

    const std::string address_;
    int port_;
    PageServer server_;
    std::future<void> listener_;
};

}  // namespace tavro::service
