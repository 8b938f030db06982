#include "http/own_names.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace tavro::service {

namespace {

/// `name` in the one spelling that is compared: lower case, an address in its shortest form.
std::string normalised(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
    });
    std::array<unsigned char, sizeof(in6_addr)> bytes;
    std::array<char, INET6_ADDRSTRLEN> text;
    if (::inet_pton(AF_INET6, name.c_str(), bytes.data()) == 1)
        return ::inet_ntop(AF_INET6, bytes.data(), text.data(), text.size());
    return name;
}

/// Name and port of "name:port" or "[address]:port"; the port is empty if there is none.
std::pair<std::string, std::string> split(const std::string& host) {
    const bool bracketed = !host.empty() && host[0] == '[';
    const std::size_t end = bracketed ? host.find(']') : host.find(':');
    if (end == std::string::npos)
        return {bracketed ? "" : host, ""};
    const std::string name = bracketed ? host.substr(1, end - 1) : host.substr(0, end);
    const std::string rest = host.substr(bracketed ? end + 1 : end);
    if (rest.empty())
        return {name, ""};
    return rest[0] == ':' && rest.size() > 1 ? std::pair(name, rest.substr(1))
                                             : std::pair<std::string, std::string>();
}

/// Whether `name` is an address of one of this machine's network devices.
bool isOfThisMachine(const std::string& name) {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0)
        return false;
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owned(first, &::freeifaddrs);
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        const int family = entry->ifa_addr ? entry->ifa_addr->sa_family : AF_UNSPEC;
        if (family != AF_INET && family != AF_INET6)
            continue;
        const socklen_t size = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
        std::array<char, NI_MAXHOST> text;
        if (::getnameinfo(entry->ifa_addr, size, text.data(), text.size(), nullptr, 0,
                          NI_NUMERICHOST) == 0 &&
            name == std::string(text.data()))
            return true;
    }
    return false;
}

}  // namespace

OwnNames::OwnNames(std::string address, std::vector<std::string> more)
    : address_(normalised(std::move(address))), names_{"127.0.0.1", "localhost", "::1", address_} {
    for (std::string& name : more)
        names_.push_back(normalised(std::move(name)));
}

bool OwnNames::isListed(const std::string& name) const {
    return std::find(names_.begin(), names_.end(), name) != names_.end();
}

bool OwnNames::hasName(const std::string& name) const {
    const bool everyAddress = address_ == "0.0.0.0" || address_ == "::";
    return isListed(name) || (everyAddress && isOfThisMachine(name));
}

bool OwnNames::isHost(const std::string& host, int port) const {
    const auto [name, given] = split(host);
    if (name.empty())
        return false;
    const bool ownPort = given.empty() || given == std::to_string(port);
    return (ownPort && hasName(normalised(name))) || isListed(normalised(host));
}

bool OwnNames::isOrigin(const std::string& origin, int port) const {
    constexpr std::string_view scheme = "http://";
    return origin.rfind(scheme, 0) == 0 && isHost(origin.substr(scheme.size()), port);
}

}  // namespace tavro::service
