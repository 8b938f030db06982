#include "http/http_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <filesystem>
#include <stdexcept>

namespace tavro::service {

namespace {

using NameOfSocket = int (*)(int, sockaddr*, socklen_t*);

/// The port that `nameOfSocket` gives for `descriptor`; 0 if it has none.
int portOf(int descriptor, NameOfSocket nameOfSocket) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    if (nameOfSocket(descriptor, reinterpret_cast<sockaddr*>(&address), &size) == -1)
        return 0;
    if (address.ss_family == AF_INET)
        return ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6*>(&address)->sin6_port);
    return 0;
}

}  // namespace

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
        shutDownConnections();
    listener_ = {};
}

// The HTTP library does not show its sockets, and has no way to end a connection without an answer.
void HttpServer::shutDownConnections(int remotePort) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const std::string name = entry.path().filename();
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        if (portOf(descriptor, ::getsockname) != port_)
            continue;
        const int peer = portOf(descriptor, ::getpeername);
        if (peer != 0 && (remotePort == 0 || peer == remotePort))
            ::shutdown(descriptor, SHUT_RDWR);
    }
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
