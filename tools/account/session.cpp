#include "account/session.h"

#include "account/failure.h"

namespace tavro::tools {

void requireConfiguration(const Account& account) {
    if (!account.isConfigured())
        throw Failure("there is no complete account configuration in " + account.folder(),
                      "run 'tavroctl setup' first");
}

std::unique_ptr<Tavro> openSession(const Account& account, Need need) {
    requireConfiguration(account);
    if (!account.isRegistered())
        throw Failure("the device is not registered", "run 'tavroctl register' first");
    if (need == Need::Session && !account.isLoggedIn())
        throw Failure("nobody is logged in", "run 'tavroctl login' first");
    auto session = std::make_unique<Tavro>();
    if (!session->init(account.folder()))
        throw Failure("the device token in " + account.folder() + " cannot be read");
    return session;
}

}  // namespace tavro::tools
