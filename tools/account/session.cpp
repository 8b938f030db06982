#include "account/session.h"

#include <lectern.h>

#include "account/files.h"
#include "platform/account_files.h"
#include "platform/configuration.h"
#include "platform/device_paths.h"
#include "program/failure.h"
#include "server/connection_keys.h"
#include "session/account_keys.h"

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
    const std::string token = contentOf(account.file(account_files::token)).value_or("");
    loadServerSettings();
    auto session = std::make_unique<Tavro>();
    const bool opened = session->init(account.folder());
    // A token that it cannot read the library takes for none: it registers the device anew, the
    // only request that it makes here, and no session survives that.
    const bool registered = session->server && !session->server->getLastXMLAnswer().empty();
    if (registered)
        replaceFile(account.file(account_files::token), token);
    if (!opened || registered ||
        (need == Need::Session && session->sessionID() != account.value(account_keys::session)))
        throw Failure("the account in " + account.folder() + " cannot be read, or changes just now",
                      "run the same command again");
    return session;
}

void loadServerSettings() {
    TavroServer server("");
    const std::string path = device_paths::serverSettings();
    const auto file = platform::openConfiguration(path);
    if (!file && exists(path))
        throwUnreadable(path);
    // Where it cannot open the file, the library speaks to the service that is built in. Devices
    // whose partner has no such file do so however often they are asked.
    const std::string url = ReadString(file.get(), connection_keys::base_api_url, "");
    if (!url.empty() && url != TavroServer::baseApiUrl)
        server.LoadServerConnectionData();
}

}  // namespace tavro::tools
