#include "api/handlers.h"
#include "api/result.h"
#include "state/secrets.h"

namespace tavro::service {

void Call::requireConsumer() const {
    const Consumer asking(value("ServiceConsumerID"), value("ServiceConsumerPassword"));
    if (consumer && *consumer != asking)
        throw RequestError(result::unknown_consumer);
}

std::string Call::requireDevice() const {
    if (auto device = accounts.deviceOf(value("Token")))
        return *device;
    throw RequestError(result::unknown_token);
}

void Call::requireSession(const char* name) const {
    requireDevice();
    if (!accounts.hasSession(value(name), value("Token")))
        throw RequestError(result::unknown_session);
}

DeviceResponse registerDevice(Call& call) {
    call.requireConsumer();
    const std::string token =
        call.accounts.registerDevice(call.value("DeviceId"), call.value("DeviceType"));
    return DeviceResponse(result::success, {{"Token", token}});
}

DeviceResponse createUser(Call& call) {
    call.requireDevice();
    if (!call.accounts.create(call.value("Email"), call.value("FirstName"), call.value("LastName"),
                              call.value("Password")))
        throw RequestError(result::existing_account);
    return DeviceResponse();
}

DeviceResponse loginUser(Call& call) {
    if (call.requireDevice() != call.value("DeviceID"))
        throw RequestError(result::unknown_device);
    const auto account = call.accounts.authenticate(call.value("EmailID"), call.value("Password"));
    if (!account)
        throw RequestError(result::wrong_password);
    const std::string session = call.accounts.startSession(call.value("Token"), *account);
    return DeviceResponse(result::success, {{"SessionID", session},
                                            {"VendorToken", randomToken()},
                                            {"VendorId", std::to_string(*account)}});
}

DeviceResponse forgetPassword(Call& call) {
    call.requireDevice();
    if (!call.accounts.exists(call.value("EmailID")))
        throw RequestError(result::unknown_account);
    return DeviceResponse(result::reminder_sent);
}

DeviceResponse getShopUrl(Call& call) {
    call.requireConsumer();
    return DeviceResponse(
        result::success,
        {{"ShopURL", call.request.baseUrl + "/shop"},
         {"ShopName", "Zabrin"},
         {"Shopid", "C07D3A95-61E2-4B7A-9F14-8A2E5D0C6B41"},
         {"TermsOfServiceUrl", call.request.baseUrl + "/terms"},
         {"TermsOfServiceText",
          "This is a local stand-in of the service. It promises nothing and forgets what you "
          "delete."}});
}

}  // namespace tavro::service
