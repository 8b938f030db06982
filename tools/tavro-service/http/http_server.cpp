#include "http/http_server.h"

#include <sys/socket.h>

#include <stdexcept>

#include "http/connection.h"
#include "http/connection_threads.h"
#include "posix/file_descriptor.h"

namespace tavro::service {

PageServer::PageServer(std::chrono::milliseconds patience) : patience_(patience) {
    new_task_queue = [] { return new ConnectionThreads; };
}

bool PageServer::process_and_close_socket(socket_t socket) {
    const posix::FileDescriptor owned(socket);
    {
        const std::lock_guard lock(mutex_);
        sockets_[std::this_thread::get_id()] = socket;
    }
    Connection connection(socket, patience_);
    bool closed = false;
    // One request for each connection: a client repeats what fails on a connection used before,
    // and a fault for one request would never be seen.
    const bool answered = process_request(connection, true, closed, nullptr);
    connection.finish();
    const std::lock_guard lock(mutex_);
    sockets_.erase(std::this_thread::get_id());
    ::shutdown(socket, SHUT_RDWR);
    return answered;
}

void PageServer::shutDownConnections() {
    const std::lock_guard lock(mutex_);
    for (const auto& [thread, socket] : sockets_)
        ::shutdown(socket, SHUT_RDWR);
}

void PageServer::shutDownConnection() {
    const std::lock_guard lock(mutex_);
    ::shutdown(sockets_.at(std::this_thread::get_id()), SHUT_RDWR);
}

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
    server_.set_keep_alive_max_count(1);
    const std::string wanted = url();
    if (port_ == 0)
        port_ = server_.bind_to_any_port(address_);
    else if (!server_.bind_to_port(address_, port_))
        port_ = -1;
    if (port_ == -1)
        throw std::runtime_error("cannot listen on " + wanted +
                                 ": the port is in use or the address is not this machine's");
    server_.lengthenQueue();
}

void HttpServer::stop() {
    if (!listener_.valid())
        return;
    server_.stop();
    while (listener_.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready)
        server_.shutDownConnections();
    listener_ = {};
}

std::string HttpServer::url() const {
    const bool versionSix = address_.find(':') != std::string::npos;
    return "http://" + (versionSix ? "[" + address_ + "]" : address_) + ":" + std::to_string(port_);
}

}  // namespace tavro::service
