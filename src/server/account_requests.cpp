#include "server/device_api.h"
#include "tavroserver.h"

using device_api::assignAnswers;
using device_api::formatBody;
using device_api::success_code;

int TavroServer::RegisterDevice(const std::string& consumerID, const std::string& consumerPassword,
                                const std::string& deviceType) {
    const std::string body = formatBody(registerDeviceRequest, deviceId, deviceType, consumerID,
                                        consumerPassword, shopID);
    lastError.clear();
    lastMessage.clear();
    token.clear();
    if (!device_api::send(*curlManager, "RegisterDevice", body))
        return 1;
    device_api::dumpAnswer(stderr, "Register responce is [", curlManager->responseBuffer, "]\n");
    const auto answers = device_api::readAnswer(*curlManager, *parser);
    if (!answers)
        return 1;
    assignAnswers(*answers, {{"Error", lastError}, {"Message", lastMessage}, {"Token", token}});
    return lastError == success_code && !token.empty() ? 0 : 1;
}

int TavroServer::CreateUser(const std::string& email, const std::string& firstName,
                            const std::string& lastName, const std::string& password) {
    const std::string body =
        formatBody(createAccountRequest, email, firstName, lastName, password, token);
    lastError.clear();
    lastMessage.clear();
    const auto answers = device_api::ask(*curlManager, *parser, "CreateUser", body);
    if (!answers)
        return 1;
    assignAnswers(*answers, {{"Error", lastError}, {"Message", lastMessage}});
    return lastError == success_code ? 0 : 1;
}

int TavroServer::loginUser(const std::string& email, const std::string& password) {
    const std::string body = formatBody(loginUserRequest, email, password, deviceId, token);
    lastError.clear();
    lastMessage.clear();
    sessionId.clear();
    vendorToken.clear();
    vendorId.clear();
    const auto answers = device_api::ask(*curlManager, *parser, "LoginUser", body);
    if (!answers || !device_api::assignAnswer(*answers, "Error", lastError))
        return 1;
    assignAnswers(*answers, {{"Message", lastMessage},
                             {"SessionID", sessionId},
                             {"VendorToken", vendorToken},
                             {"VendorId", vendorId}});
    return lastError == success_code && !sessionId.empty() ? 0 : 1;
}

int TavroServer::forgetPassword(const std::string& email) {
    const std::string body = formatBody(forgetPasswordRequest, email, token);
    lastError.clear();
    lastMessage.clear();
    const auto answers = device_api::ask(*curlManager, *parser, "ForgetPassword", body);
    if (!answers)
        return 1;
    assignAnswers(*answers, {{"Error", lastError}, {"Message", lastMessage}});
    return lastError == device_api::reminder_sent_code ? 0 : 1;
}
