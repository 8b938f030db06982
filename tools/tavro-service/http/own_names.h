#pragma once

#include <string>
#include <vector>

namespace tavro::service {

/// The names under which a service may be spoken to. A web page in somebody's browser can send
/// requests to any address, and can have a name of its own lead to this machine; but it cannot make
/// the browser name another host or origin than the true one.
class OwnNames {
public:
    /// For a service that listens on `address`, all of this machine's if it is 0.0.0.0 or ::, and
    /// goes by the names `more` besides, as "name:port" where another port is forwarded to it.
    OwnNames(std::string address, std::vector<std::string> more);

    /// Whether `host`, the value of a header line "Host", names this service, which listens on
    /// `port`: one of its names, with the port or without, or with one of the names' own. Letter
    /// case does not count.
    bool isHost(const std::string& host, int port) const;

    /// Whether `origin`, the value of a header line "Origin", is a page of this service.
    bool isOrigin(const std::string& origin, int port) const;

private:
    bool isListed(const std::string& name) const;
    bool hasName(const std::string& name) const;

    const std::string address_;
    std::vector<std::string> names_;
};

}  // namespace tavro::service
