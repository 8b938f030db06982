#include <string>

#include "api/call.h"
#include "api/handlers.h"
#include "api/request_error.h"
#include "state/secrets.h"

namespace tavro::service {

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
