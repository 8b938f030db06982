#pragma once

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <string>

namespace tavro::service {

/// An HTTP server on threads of its own, which carries one request for each connection.
class HttpServer {
public:
    /// A server for `address` and `port` (0: a free one) that does not listen yet.
    HttpServer(std::string address, int port) : address_(std::move(address)), port_(port) {}

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

    /// Shuts down the connections that are open: all, or only the one to the peer's port
    /// `remotePort`. Whoever reads or writes there sees the end of the connection.
    void shutDownConnections(int remotePort = 0);

    /// Waits, but no longer than until the server is stopped.
    void pause(std::chrono::milliseconds delay);

    /// The port on which it listens.
    int port() const { return port_; }

    /// Its address, as "http://127.0.0.1:1510".
    std::string url() const;

private:
    void bind();

    const std::string address_;
    int port_;
    httplib::Server server_;
    std::future<void> listener_;
    std::mutex mutex_;  // of the next two
    std::condition_variable stopWanted_;
    bool stopping_ = false;
};

}  // namespace tavro::service
