#include "tavroctl/service_address.h"

#include <optional>
#include <string_view>

#include "program/failure.h"

namespace tavro::tools {

namespace {

constexpr std::string_view digits = "0123456789";
constexpr std::string_view ipv6_characters = "0123456789ABCDEFabcdef:.";
constexpr std::string_view name_characters =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz._-";
constexpr std::size_t longest_name = 253;  // that a name server knows
constexpr std::size_t longest_port = 5;    // digits
constexpr int highest_port = 65535;

/// Takes what `rest` begins with off it, if that is `beginning`.
bool take(std::string_view& rest, std::string_view beginning) {
    if (rest.substr(0, beginning.size()) != beginning)
        return false;
    rest.remove_prefix(beginning.size());
    return true;
}

/// Takes the longest beginning of `rest` that consists of `characters` off it.
std::string takeAll(std::string_view& rest, std::string_view characters) {
    const std::string_view taken = rest.substr(0, rest.find_first_not_of(characters));
    rest.remove_prefix(taken.size());
    return std::string(taken);
}

std::optional<std::string> takeHost(std::string_view& rest) {
    const bool isBracketed = take(rest, "[");
    const std::string host = takeAll(rest, isBracketed ? ipv6_characters : name_characters);
    if (host.empty() || host.size() > longest_name || (isBracketed && !take(rest, "]")))
        return std::nullopt;
    return isBracketed ? "[" + host + "]" : host;
}

bool isPort(const std::string& text) {
    return !text.empty() && text.size() <= longest_port && std::stoi(text) >= 1 &&
           std::stoi(text) <= highest_port;
}

std::optional<ServiceAddress> parsed(std::string_view rest) {
    if (!take(rest, "http://"))
        return std::nullopt;
    ServiceAddress address;
    const auto host = takeHost(rest);
    if (take(rest, ":"))
        address.port = takeAll(rest, digits);
    take(rest, "/");
    if (!host || !isPort(address.port) || !rest.empty())
        return std::nullopt;
    address.host = *host;
    return address;
}

}  // namespace

ServiceAddress parseServiceAddress(const std::string& text) {
    const auto address = parsed(text);
    if (!address)
        throw UsageError("'" + text +
                         "' is no service address: it is http://HOST or http://HOST:PORT, and "
                         "nothing else (the device speaks plain HTTP only)");
    return *address;
}

}  // namespace tavro::tools
