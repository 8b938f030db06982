#pragma once

#include <string>

namespace tavro::tools {

/// Where a service listens.
struct ServiceAddress {
    std::string host;  ///< a name or an address, an IPv6 one in brackets
    std::string port = "80";
};

/// Takes "http://HOST" or "http://HOST:PORT", with a "/" behind it or not, apart. Throws UsageError
/// for anything else.
ServiceAddress parseServiceAddress(const std::string& text);

}  // namespace tavro::tools
