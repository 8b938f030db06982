#include "account.h"

#include <lectern.h>
#include <lectern_host.h>

#include <cerrno>

#include "atomic_file.h"
#include "platform/configuration.h"
#include "tavro.h"

namespace fs = std::filesystem;

namespace reader {

namespace {

/// Login marker of the device's programs.
constexpr const char* vendor_token_file = ".tavro_vendor_token";

void saveOrThrow(platform::Configuration config, const std::string& path) {
    errno = 0;
    if (platform::save(std::move(config)) != 0)
        throwCannotWrite(path);
}

std::string withoutTrailingSlashes(std::string folder) {
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    return folder;
}

}  // namespace

Account::Account(const std::string& folder) : folder_(withoutTrailingSlashes(folder)) {}

std::string Account::value(const std::string& key) const {
    const auto config = platform::openConfiguration(file(Tavro::config_file));
    return ReadString(config.get(), key.c_str(), "");
}

fs::path Account::downloadFolder() const {
    return withoutTrailingSlashes(value("DownloadFolderPath"));
}

bool Account::isConfigured() const {
    for (const char* key :
         {"SerialNumber", "ConsumerID", "ConsumerPassword", "DeviceType", "DownloadFolderPath"})
        if (value(key).empty())
            return false;
    return true;
}

bool Account::isRegistered() const {
    std::error_code missing;
    const auto size = fs::file_size(file(Tavro::token_file), missing);
    return !missing && size > 0;
}

void Account::store(const Settings& settings) const {
    storeSettings(file(Tavro::config_file), settings);
}

void Account::storeToken(const std::string& token) const {
    writeAtomically(file(Tavro::token_file), token);
    forgetSession();
}

void Account::storeSession(const std::string& sessionId, const std::string& vendorToken) const {
    store({{"sessionID", sessionId}});
    writeAtomically(file(vendor_token_file), vendorToken);
}

void Account::forgetSession() const {
    auto config = platform::openConfiguration(file(Tavro::config_file));
    RemoveKey(config.get(), "sessionID");
    saveOrThrow(std::move(config), file(Tavro::config_file));
    fs::remove(file(vendor_token_file));
}

void storeSettings(const std::string& path, const Settings& settings) {
    auto config = platform::openConfiguration(path);
    for (const auto& [key, value] : settings)
        WriteString(config.get(), key.c_str(), value.c_str());
    saveOrThrow(std::move(config), path);
}

}  // namespace reader
