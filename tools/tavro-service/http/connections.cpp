#include "http/connections.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <filesystem>
#include <string>

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

// The HTTP library does not show its sockets, and has no way to end a connection without an answer.
void shutDownConnections(int localPort, int remotePort) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const std::string name = entry.path().filename();
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        if (portOf(descriptor, ::getsockname) != localPort)
            continue;
        const int peer = portOf(descriptor, ::getpeername);
        if (peer != 0 && (remotePort == 0 || peer == remotePort))
            ::shutdown(descriptor, SHUT_RDWR);
    }
}

}  // namespace tavro::service
