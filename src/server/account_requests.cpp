#include "server/exchange.h"
#include "server/result_codes.h"
#include "tavroserver.h"

using exchange::assignAnswers;
using exchange::formatBody;

int TavroServer::RegisterDevice(const std::string& consumerID, const std::string& consumerPassword,
                                const std::string& deviceType) {
    const std::string body = formatBody(registerDeviceRequest, deviceId, deviceType, consumerID,
                                        consumerPassword, shopID);
    lastError.clear();
    lastMessage.clear();
    token.clear();
    if (!exchange::send(*curlManager, "RegisterDevice", body))
        return 1;
    exchange::dumpAnswer(stderr, "Register responce is [", curlManager->responseBuffer, "]\n");
    const auto answers = exchange::readAnswer(*curlManager, *parser);
    if (!answers)
        return 1;
    assignAnswers(*answers, {{"Error", lastError}, {"Message", lastMessage}, {"Token", token}});
    return lastError == result_codes::success && !token.empty() ? 0 : 1;
}

int TavroServer::CreateUser(const std::string& email, const std::string& firstName,
                            const std::string& lastName, const std::string& password) {
    const std::string body =
        formatBody(createAccountRequest, email, firstName, lastName, password, token);
    lastError.clear();
    lastMessage.clear();
    const auto answers = exchange::ask(*curlManager, *parser, "CreateUser", body);
    if (!answers)
        return 1;
    assignAnswers(*answers, {{"Error", lastError}, {"Message", lastMessage}});
    return lastError == result_codes::success ? 0 : 1;
}

int TavroServer::loginUser(const std::string& email, const std::string& password) {
    const std::string body = formatBody(loginUserRequest, email, password, deviceId, token);
    lastError.clear();
    lastMessage.clear();
    sessionId.clear();
    vendorToken.clear();
    vendorId.clear();
    const auto answers = exchange::ask(*curlManager, *parser, "LoginUser", body);
    if (!answers || !exchange::assignAnswer(*answers, "Error", lastError))
        return 1;
    assignAnswers(*answers, {{"Message", lastMessage},
                             {"SessionID", sessionId},
                             {"VendorToken", vendorToken},
                             {"VendorId", vendorId}});
    return lastError == result_codes::success && !sessionId.empty() ? 0 : 1;
}

int TavroServer::forgetPassword(const std::string& email) {
    const std::string body = formatBody(forgetPasswordRequest, email, token);
    lastError.clear();
    lastMessage.clear();
    const auto answers = exchange::ask(*curlManager, *parser, "ForgetPassword", body);
    if (!answers)
        return 1;
    assignAnswers(*answers, {{"Error", lastError}, {"Message", lastMessage}});
    return lastError == result_codes::reminder_sent ? 0 : 1;
}
