#include "api/call.h"

#include "api/request_error.h"

namespace tavro::service {

Call::Call(DeviceRequest& theRequest, Accounts& theAccounts, Catalogue& theCatalogue,
           const std::optional<Consumer>& consumer)
    : request(theRequest),
      accounts(theAccounts),
      catalogue(theCatalogue),
      consumer_(consumer),
      values_(readValues(theRequest)) {}

void Call::requireConsumer() const {
    const Consumer consumer(value("ServiceConsumerID"), value("ServiceConsumerPassword"));
    if (consumer_ && *consumer_ != consumer)
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

}  // namespace tavro::service
