#include "http/connection.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "posix/retry_after_signal.h"

namespace tavro::service {

namespace {

using std::chrono::milliseconds;

/// What the slowest line carries that is waited for, in bytes in a millisecond.
constexpr std::size_t slowest_line = 1;

using NameOfSocket = int (*)(int, sockaddr*, socklen_t*);

void readName(int socket, NameOfSocket nameOfSocket, std::string& address, int& port) {
    sockaddr_storage name = {};
    socklen_t size = sizeof name;
    std::array<char, NI_MAXHOST> host;
    std::array<char, NI_MAXSERV> service;
    if (nameOfSocket(socket, reinterpret_cast<sockaddr*>(&name), &size) != 0 ||
        ::getnameinfo(reinterpret_cast<const sockaddr*>(&name), size, host.data(), host.size(),
                      service.data(), service.size(), NI_NUMERICHOST | NI_NUMERICSERV) != 0)
        return;
    address = host.data();
    std::from_chars(service.data(), service.data() + std::strlen(service.data()), port);
}

bool isReady(int socket, short event, milliseconds timeout) {
    pollfd entry = {socket, event, 0};
    const auto wait = static_cast<int>(std::max<milliseconds::rep>(timeout.count(), 0));
    return posix::retryAfterSignal([&] { return ::poll(&entry, 1, wait); }) > 0;
}

}  // namespace

Connection::Clock::duration Connection::timeLeft() const {
    return patience_ + milliseconds(transferred_ / slowest_line) - waited_;
}

bool Connection::is_readable() const {
    return !received_.empty() || isReady(socket_, POLLIN, patience_);
}

bool Connection::is_writable() const {
    return isReady(socket_, POLLOUT, patience_);
}

bool Connection::waitFor(short event) {
    const auto start = Clock::now();
    const bool ready = isReady(
        socket_, event, std::min(std::chrono::duration_cast<milliseconds>(timeLeft()), patience_));
    waited_ += Clock::now() - start;
    return ready;
}

ssize_t Connection::read(char* bytes, size_t size) {
    if (received_.empty()) {
        if (!waitFor(POLLIN))
            return -1;
        const ssize_t got = posix::retryAfterSignal(
            [&] { return ::recv(socket_, buffer_.data(), buffer_.size(), 0); });
        if (got <= 0)
            return got;
        received_ = {buffer_.data(), static_cast<std::size_t>(got)};
        transferred_ += received_.size();
    }
    const std::size_t count = received_.copy(bytes, size);
    received_.remove_prefix(count);
    return static_cast<ssize_t>(count);
}

ssize_t Connection::write(const char* bytes, size_t size) {
    for (std::size_t sent = 0; sent < size;) {
        if (!waitFor(POLLOUT))
            return -1;
        const ssize_t count = posix::retryAfterSignal([&] {
            return ::send(socket_, bytes + sent, size - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        });
        if (count < 0 && errno != EAGAIN)
            return -1;
        sent += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        transferred_ += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return static_cast<ssize_t>(size);
}

void Connection::finish() {
    constexpr std::size_t most_bytes = 4u << 20;
    const auto end = Clock::now() + std::chrono::seconds(1);
    ::shutdown(socket_, SHUT_WR);
    for (std::size_t read = 0; read < most_bytes;) {
        const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
        if (left.count() <= 0 || !isReady(socket_, POLLIN, left))
            return;
        const ssize_t got = ::recv(socket_, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
        if (got <= 0)
            return;
        read += static_cast<std::size_t>(got);
    }
}

void Connection::get_remote_ip_and_port(std::string& address, int& port) const {
    readName(socket_, ::getpeername, address, port);
}

void Connection::get_local_ip_and_port(std::string& address, int& port) const {
    readName(socket_, ::getsockname, address, port);
}

}  // namespace tavro::service
