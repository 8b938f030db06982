#include "tavro.h"

// Before there is a service object, every token getter answers with an empty text of its own.

const std::string& Tavro::deviceToken() const {
    static const std::string none;
    return server ? server->token : none;
}

const std::string& Tavro::sessionID() const {
    static const std::string none;
    return server ? server->sessionId : none;
}

const std::string& Tavro::vendorToken() const {
    static const std::string none;
    return server ? server->vendorToken : none;
}

const std::string& Tavro::vendorID() const {
    static const std::string none;
    return server ? server->vendorId : none;
}

std::string Tavro::lastError() const {
    return server ? server->lastError : std::string();
}

bool Tavro::getShopInfo(const std::string& consumer, const std::string& consumerSecret,
                        const std::string& type) {
    return server && server->getShopInfo(consumer, consumerSecret, type) == 0;
}

const std::string& Tavro::getShopUrl() const {
    return server ? server->shopUrl : BookDescription::emptyString;
}

const std::string& Tavro::getShopLicenseUrl() const {
    return server ? server->termsOfServiceUrl : BookDescription::emptyString;
}

const std::string& Tavro::getShopName() const {
    if (!server)
        return BookDescription::emptyString;
    return server->shopName.empty() ? TavroServer::defaultshopName : server->shopName;
}
