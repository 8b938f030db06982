#include "tavro.h"

#include "platform/configuration.h"
#include "posix/files.h"

const char* const Tavro::config_file = ".tavro.conf";
const char* const Tavro::token_file = ".tavro_token";
const char* const Tavro::tavro_password = ".tavro_shadow";
const char* const Tavro::list_file = ".tavro.lst";
const char* const Tavro::tavro_books = ".tbooks.xml";
const char* const Tavro::journal_file = ".tavro_journal";

namespace {

constexpr int platform_start_flags = 65573;

/// Makes the bytes of `token` the whole content of the token file.
void storeToken(const std::string& path, const std::string& token) {
    posix::replaceFile(path, "w+", token.data(), token.size());
}

}  // namespace

Tavro::Tavro() {
    InitLectern(platform_start_flags);
    parser = std::make_unique<XMLParser>();
}

Tavro::~Tavro() {
    server.reset();
    parser.reset();
}

bool Tavro::init(const std::string& directory) {
    if (directory.empty() || !readConfig(directory))
        return false;
    configDir = directory;
    bookMap.path = configPath(list_file);
    if (!server)
        server = std::make_unique<TavroServer>(serialNumber);
    password =
        ReadSecret(platform::openConfiguration(configPath(tavro_password)).get(), "password", "");
    const std::string storedSession =
        ReadString(platform::openConfiguration(configPath(config_file)).get(), "sessionID", "");
    server->token = posix::readFile(configPath(token_file));
    if (server->token.empty()) {
        if (server->RegisterDevice(consumerID, consumerPassword, deviceType) == 1 ||
            server->token.empty())
            return false;
        storeToken(configPath(token_file), server->token);
    }
    server->sessionId = storedSession;
    return true;
}

bool Tavro::readConfig(const std::string& directory) {
    const auto config = platform::openConfiguration(directory + "/" + config_file);
    if (!config)
        return false;
    const struct {
        const char* key;
        std::string& member;
    } entries[] = {{"SerialNumber", serialNumber},
                   {"ConsumerID", consumerID},
                   {"ConsumerPassword", consumerPassword},
                   {"DeviceType", deviceType},
                   {"Email", email},
                   {"FirstName", firstName},
                   {"LastName", lastName},
                   {"DownloadFolderPath", downloadFolderPath}};
    for (const auto& entry : entries)
        entry.member = ReadString(config.get(), entry.key, "");
    return !serialNumber.empty() && !consumerID.empty() && !consumerPassword.empty() &&
           !deviceType.empty() && !downloadFolderPath.empty();
}

bool Tavro::hasDevice() const {
    return server && !server->token.empty();
}

bool Tavro::hasSession() const {
    return hasDevice() && !server->sessionId.empty();
}

std::string Tavro::configPath(const char* name) const {
    return configDir + "/" + name;
}
