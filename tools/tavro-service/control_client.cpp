#include "control_client.h"

#include <httplib.h>

#include <stdexcept>

namespace tavro::service {

namespace {

std::string bodyOf(const httplib::Result& answer, const std::string& address) {
    if (!answer)
        throw std::runtime_error("no service answers at " + address +
                                 ". Start one, or give its address with --service.");
    if (answer->status != 200)
        throw std::runtime_error("the service refuses: HTTP status " +
                                 std::to_string(answer->status) + " " + answer->body);
    return answer->body;
}

}  // namespace

ControlClient::ControlClient(std::string address)
    : address_(address.substr(0, address.find_last_not_of('/') + 1)) {}

std::string ControlClient::get(const std::string& path) const {
    return bodyOf(httplib::Client(address_).Get(path), address_);
}

std::string ControlClient::post(const std::string& path, const std::string& json) const {
    return bodyOf(httplib::Client(address_).Post(path, json, "application/json"), address_);
}

std::string ControlClient::remove(const std::string& path) const {
    return bodyOf(httplib::Client(address_).Delete(path), address_);
}

}  // namespace tavro::service
