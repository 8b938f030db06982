#include <lectern.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <regex>

#include "platform/device_paths.h"
#include "session/account_keys.h"
#include "tavroctl/commands.h"
#include "tavroserver.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

constexpr int highest_port = 65535;

/// A serial number that no second device folder is likely to get.
std::string newSerialNumber() {
    std::random_device random;
    std::string digits;
    for (int count = 0; count < 8; ++count)
        digits += "0123456789ABCDEF"[random() % 16];
    return "DESKTOP-" + digits;
}

/// Where the device keeps its books; beside a configuration folder elsewhere, a folder inside it.
fs::path defaultDownloadFolder(const Account& account) {
    const fs::path standard = device_paths::configuration_folder;
    if (account.folder() != standard)
        return fs::path(account.folder()) / "books";
    return standard.parent_path().parent_path().parent_path() / "Tavro";
}

/// Full path of the download folder `folder`. Throws UsageError when log-out could not delete it.
std::string plainFolder(const std::string& folder) {
    std::string path = fs::absolute(folder).lexically_normal();
    if (!isPlainWord(path))
        throw UsageError(
            "'" + path +
            "' is no folder for books: log-out gives its path to the shell as it is, so "
            "it may hold letters, digits and " +
            device_paths::plain_punctuation + " only");
    return path;
}

/// The values to write: those given, and a default for each required one that is missing.
Settings completed(const Account& account, const Settings& given) {
    Settings settings;
    for (const auto& [key, value] : given)
        if (!value.empty())
            settings[key] = key == account_keys::download_folder ? plainFolder(value) : value;
    const Settings defaults{
        {account_keys::serial_number, newSerialNumber()},
        {account_keys::consumer_id, "tavro-desktop"},
        {account_keys::consumer_password, "tavro-desktop"},
        {account_keys::device_type, "desktop"},
        {account_keys::download_folder, defaultDownloadFolder(account).string()}};
    for (const auto& [key, value] : defaults)
        if (account.value(key).empty())
            settings.emplace(key, value);
    return settings;
}

/// The server settings that send everything to the service at `address`.
Settings serverSettings(const std::string& address) {
    static const std::regex form(
        R"(http://(\[[0-9A-Fa-f:.]+\]|[A-Za-z0-9._-]+)(:([0-9]{1,5}))?/?)");
    std::smatch match;
    const bool matches = std::regex_match(address, match, form);
    const std::string port = matches && match[3].matched ? match[3].str() : "80";
    if (!matches || std::stoi(port) < 1 || std::stoi(port) > highest_port)
        throw UsageError("'" + address +
                         "' is no service address: it is http://HOST or http://HOST:PORT, and "
                         "nothing else (the device speaks plain HTTP only)");
    const std::string host = "http://" + match[1].str();
    return {{"baseApiUrl", host + "/IOSCloudManagement.svc/"}, {"apiPort", port},
            {"uploadUrl", host + "/UploadContent.aspx"},       {"uploadPort", port},
            {"downloadUrl", host + "/DownloadContent.aspx"},   {"downloadPort", port}};
}

/// Writes `settings` into the device's server-settings file and sees that the library takes them.
void storeServerSettings(const Settings& settings) {
    const fs::path file = device_paths::server_settings;
    fs::create_directories(file.parent_path());
    storeSettings(file, settings);
    const TavroServer reader("");
    if (TavroServer::baseApiUrl != settings.at("baseApiUrl"))
        throw Failure("the library does not read " + file.string() +
                          " on a device with partner code " +
                          std::to_string(GetCustomizedPartner()),
                      "take partner code 12 or 16");
}

}  // namespace

void setUp(const Arguments& arguments, const Output& output) {
    Account account(arguments.folder);
    const Settings settings = completed(account, arguments.settings);
    if (!arguments.service.empty())
        storeServerSettings(serverSettings(arguments.service));
    const TavroServer reader("");  // loads the address for the report below

    fs::create_directories(account.folder());
    const std::string formerEmail = account.value(account_keys::email);
    account.store(settings);
    if (account.value(account_keys::email) != formerEmail)
        account.forgetSession();
    fs::create_directories(account.downloadFolder());

    output.summary({{"configuration", account.folder()},
                    {"downloadFolder", account.downloadFolder()},
                    {"serialNumber", account.value(account_keys::serial_number)},
                    {"email", account.value(account_keys::email)},
                    {"service", serviceUrl()}});
}

}  // namespace tavro::tools
