#include "http/http_server.h"

#include <sys/socket.h>

#include <stdexcept>

#include "http/connections.h"

namespace tavro::service {

void HttpServer::listen() {
    bind();
    listener_ = std::async(std::launch::async, [this] { server_.listen_after_bind(); });
    while (!server_.is_running() &&
           listener_.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    }
}

void HttpServer::bind() {
    // A port of one's own: without this another service on the same port would go unnoticed.
    server_.set_socket_options([](int socket) {
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    // One request for each connection: a client repeats what fails on a connection used before,
    // and a fault for one request would never be seen.
    server_.set_keep_alive_max_count(1);
    const std::string wanted = url();
    if (port_ == 0)
        port_ = server_.bind_to_any_port(address_);
    else if (!server_.bind_to_port(address_, port_))
        port_ = -1;
    if (port_ == -1)
        throw std::runtime_error("cannot listen on " + wanted +
                                 ": the port is in use or the address is not this machine's");
}

void HttpServer::stop() {
    if (!listener_.valid())
        return;
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    stopWanted_.notify_all();
    server_.stop();
    while (listener_.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready)
        shutDownConnections(port_);
    listener_ = {};
}

void HttpServer::pause(std::chrono::milliseconds delay) {
    std::unique_lock lock(mutex_);
    stopWanted_.wait_for(lock, delay, [this] { return stopping_; });
}

std::string HttpServer::url() const {
    const bool versionSix = address_.find(':') != std::string::npos;
    return "http://" + (versionSix ? "[" + address_ + "]" : address_) + ":" + std::to_string(port_);
}

}  // namespace tavro::service
