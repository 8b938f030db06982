#include "account/account.h"

#include <fcntl.h>
#include <lectern.h>
#include <lectern_host.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "account/files.h"
#include "platform/account_files.h"
#include "platform/configuration.h"
#include "posix/atomic_file.h"
#include "posix/file_descriptor.h"
#include "posix/retry_after_signal.h"
#include "session/account_keys.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// Opens the key/value file `path`, which need not exist, to change it. Throws Failure.
platform::Configuration openToChange(const std::string& path) {
    auto config = platform::openConfiguration(path);
    if (!config)
        throwUnreadable(path);
    return config;
}

void write(LecternConfig* config, const Settings& settings) {
    for (const auto& [key, value] : settings)
        WriteString(config, key.c_str(), value.c_str());
}

void saveOrThrow(platform::Configuration config, const std::string& path) {
    if (platform::save(std::move(config)) != 0)
        throwCannotWrite(path);
}

/// The right to change the settings files of a folder, from opening one to saving it: of two
/// writers at once the later one would undo what the earlier one has changed. Waits for it, and
/// removes what killed ones have left behind.
class FolderLock {
public:
    explicit FolderLock(const std::string& folder)
        : folder_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        if (!folder_)
            throwCannotWrite(folder, errno);
        if (posix::retryAfterSignal([this] { return ::flock(folder_.get(), LOCK_EX); }) != 0)
            throwCannotLock(folder, errno);
        posix::removeAbandonedReplacements(folder);
    }

private:
    posix::FileDescriptor folder_;
};

std::string withoutTrailingSlashes(std::string folder) {
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    return folder;
}

Settings settingsIn(const std::string& path) {
    const auto config = platform::openConfiguration(path);
    if (!config && exists(path))
        throwUnreadable(path);
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
    const std::string token = file(account_files::token);
    std::error_code error;
    const auto size = fs::file_size(token, error);
    if (error && error != std::errc::no_such_file_or_directory)
        throwCannotRead(token, error.value());
    return !error && size > 0;
}

bool Account::isLoggedIn() const {
    return !value(account_keys::session).empty();
}

void Account::store(const Settings& settings) {
    const std::string path = file(account_files::configuration);
    const auto email = settings.find(account_keys::email);
    const FolderLock lock(folder_);
    auto config = openToChange(path);
    write(config.get(), settings);
    // In one with the address: an interruption must not leave one account's session to another.
    const bool other = email != settings.end() && email->second != value(account_keys::email);
    if (other)
        RemoveKey(config.get(), account_keys::session);
    saveOrThrow(std::move(config), path);
    for (const auto& [key, text] : settings)
        settings_[key] = text;
    if (other)
        settings_.erase(account_keys::session);
    if (email != settings.end() && !isLoggedIn())  // also where an interrupted call has left it
        removeFile(file(account_files::login_marker));
}

void Account::storeToken(const std::string& token) {
    forgetSession();  // first: an interruption must not leave the old session beside the new token
    replaceFile(file(account_files::token), token);
}

void Account::storeSession(const std::string& sessionId, const std::string& vendorToken) {
    store({{account_keys::session, sessionId}});
    replaceFile(file(account_files::login_marker), vendorToken);
}

void Account::forgetSession() {
    const std::string path = file(account_files::configuration);
    const FolderLock lock(folder_);
    auto config = openToChange(path);
    RemoveKey(config.get(), account_keys::session);
    saveOrThrow(std::move(config), path);
    settings_.erase(account_keys::session);
    removeFile(file(account_files::login_marker));
}

void storeSettings(const std::string& path, const Settings& settings) {
    const FolderLock lock(fs::path(path).parent_path());
    auto config = openToChange(path);
    write(config.get(), settings);
    saveOrThrow(std::move(config), path);
}

}  // namespace tavro::tools
