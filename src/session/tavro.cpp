#include "tavro.h"

#include "platform/account_files.h"
#include "platform/configuration.h"
#include "posix/files.h"
#include "session/account_keys.h"

const char* const Tavro::config_file = account_files::configuration;
const char* const Tavro::token_file = account_files::token;
const char* const Tavro::tavro_password = account_files::password;
const char* const Tavro::list_file = account_files::book_map;
const char* const Tavro::tavro_books = account_files::catalogue;
const char* const Tavro::journal_file = account_files::journal;

namespace {

constexpr int platform_start_flags = 65573;

/// Makes the bytes of `token` the whole content of the token file.
void storeToken(const std::string& path, const std::string& token) {
    posix::overwriteUnchecked(path, "w+", token.data(), token.size());
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
    const std::string storedSession = ReadString(
        platform::openConfiguration(configPath(config_file)).get(), account_keys::session, "");
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
    } entries[] = {{account_keys::serial_number, serialNumber},
                   {account_keys::consumer_id, consumerID},
                   {account_keys::consumer_password, consumerPassword},
                   {account_keys::device_type, deviceType},
                   {account_keys::email, email},
                   {account_keys::first_name, firstName},
                   {account_keys::last_name, lastName},
                   {account_keys::download_folder, downloadFolderPath}};
    for (const auto& entry : entries)
        entry.member = ReadString(config.get(), entry.key, "");
    for (const char* key : account_keys::required)
        if (*ReadString(config.get(), key, "") == '\0')
            return false;
    return true;
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
