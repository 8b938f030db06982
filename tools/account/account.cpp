#include "account/account.h"

#include <lectern.h>
#include <lectern_host.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "account/files.h"
#include "platform/account_files.h"
#include "platform/configuration.h"
#include "session/account_keys.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

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

Settings settingsIn(const std::string& path) {
    const auto config = platform::openConfiguration(path);
    Settings settings;
    for (const char* const key : account_keys::all)
        settings[key] = ReadString(config.get(), key, "");
    return settings;
}

}  // namespace

Account::Account(const std::string& folder)
    : folder_(withoutTrailingSlashes(folder)),
      settings_(settingsIn(file(account_files::configuration))) {}

std::string Account::value(const std::string& key) const {
    const auto setting = settings_.find(key);
    return setting == settings_.end() ? std::string() : setting->second;
}

fs::path Account::downloadFolder() const {
    return withoutTrailingSlashes(value(account_keys::download_folder));
}

bool Account::isConfigured() const {
    return std::none_of(std::begin(account_keys::required), std::end(account_keys::required),
                        [this](const char* key) { return value(key).empty(); });
}

bool Account::isRegistered() const {
    std::error_code missing;
    const auto size = fs::file_size(file(account_files::token), missing);
    return !missing && size > 0;
}

bool Account::isLoggedIn() const {
    return !value(account_keys::session).empty();
}

void Account::store(const Settings& settings) {
    storeSettings(file(account_files::configuration), settings);
    for (const auto& [key, value] : settings)
        settings_[key] = value;
}

void Account::storeToken(const std::string& token) {
    replaceFile(file(account_files::token), token);
    forgetSession();
}

void Account::storeSession(const std::string& sessionId, const std::string& vendorToken) {
    store({{account_keys::session, sessionId}});
    replaceFile(file(account_files::login_marker), vendorToken);
}

void Account::forgetSession() {
    const std::string path = file(account_files::configuration);
    auto config = platform::openConfiguration(path);
    RemoveKey(config.get(), account_keys::session);
    saveOrThrow(std::move(config), path);
    settings_.erase(account_keys::session);
    fs::remove(file(account_files::login_marker));
}

void storeSettings(const std::string& path, const Settings& settings) {
    auto config = platform::openConfiguration(path);
    for (const auto& [key, value] : settings)
        WriteString(config.get(), key.c_str(), value.c_str());
    saveOrThrow(std::move(config), path);
}

}  // namespace tavro::tools
