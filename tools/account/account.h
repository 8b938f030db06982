#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace tavro::tools {

/// Keys of the account configuration with their values.
using Settings = std::map<std::string, std::string>;

/// The account in one configuration folder: its settings, and its files as the device's programs
/// keep them for the library. The settings are read once, when the object is made, and follow what
/// is stored through it; what another process stores later shows in a new object only. No lock is
/// taken.
class Account {
public:
    /// Reads the settings of the configuration folder `folder`, which need not exist yet.
    explicit Account(const std::string& folder);

    /// The configuration folder, without a trailing "/".
    const std::string& folder() const { return folder_; }

    /// Full path of the file `name` of the configuration folder.
    std::string file(const std::string& name) const { return folder_ + "/" + name; }

    /// The setting `key` (see session/account_keys.h); empty when it is absent.
    std::string value(const std::string& key) const;

    /// Folder of the downloaded books, without a trailing "/"; empty when not configured.
    std::filesystem::path downloadFolder() const;

    /// Full path of the book file `name` of the download folder.
    std::filesystem::path bookFile(const std::string& name) const {
        return downloadFolder().string() + "/" + name;
    }

    /// Whether the settings have all that the library requires.
    bool isConfigured() const;

    /// Whether a device token is stored. Throws Failure when that cannot be told.
    bool isRegistered() const;

    /// Whether a session is stored. The service may have ended it meanwhile.
    bool isLoggedIn() const;

    /// Stores `settings`, keeping what else the file holds. Another e-mail address ends the session
    /// that belongs to the former one. Throws Failure.
    void store(const Settings& settings);

    /// Stores the device token, which a session survives no change of: the session is forgotten.
    /// Throws Failure.
    void storeToken(const std::string& token);

    /// Stores what a login gave, where the device's programs look for it. Throws Failure.
    void storeSession(const std::string& sessionId, const std::string& vendorToken);

    /// Forgets the stored session. Throws Failure.
    void forgetSession();

private:
    std::string folder_;
    Settings settings_;
};

/// Writes `settings` into the key/value file `path`, creating it in an existing folder and keeping
/// what else it holds. Throws Failure.
void storeSettings(const std::string& path, const Settings& settings);

}  // namespace tavro::tools
