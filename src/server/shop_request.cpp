#include "server/exchange.h"
#include "server/result_codes.h"
#include "tavroserver.h"

int TavroServer::getShopInfo(const std::string& consumerID, const std::string& consumerPassword,
                             const std::string& deviceType) {
    const std::string body =
        exchange::formatBody(getShopUrlRequest, deviceId, deviceType, consumerID, consumerPassword);
    for (std::string* member : {&lastError, &lastMessage, &shopUrl, &shopId, &termsOfServiceUrl,
                                &termsOfServiceText, &shopName})
        member->clear();
    // A shop that says nothing is not an error; one that says something unreadable is.
    if (!exchange::send(*curlManager, "GetShopURL", body))
        return 0;
    const auto answers = exchange::readAnswer(*curlManager, *parser);
    if (!answers)
        return 1;
    exchange::assignAnswers(*answers, {{"Error", lastError},
                                       {"Message", lastMessage},
                                       {"ShopURL", shopUrl},
                                       {"ShopName", shopName},
                                       {"Shopid", shopId},
                                       {"TermsOfServiceUrl", termsOfServiceUrl}});
    // The device shows one terms value, read from the link: the text of the terms replaces it.
    if (exchange::assignAnswer(*answers, "TermsOfServiceText", termsOfServiceUrl))
        termsOfServiceText = termsOfServiceUrl;
    const bool complete = !shopUrl.empty() && !termsOfServiceUrl.empty() &&
                          !termsOfServiceText.empty() && !shopName.empty();
    return lastError != result_codes::success && complete ? 1 : 0;
}
