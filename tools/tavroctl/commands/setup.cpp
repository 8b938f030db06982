#include <lectern.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>

#include "account/book_map.h"
#include "account/books.h"
#include "account/files.h"
#include "console/confirmation.h"
#include "device_root/device_root.h"
#include "platform/device_paths.h"
#include "program/counted.h"
#include "program/failure.h"
#include "server/built_in_settings.h"
#include "server/connection_keys.h"
#include "session/account_keys.h"
#include "tavroctl/absolute_path.h"
#include "tavroctl/book_folder.h"
#include "tavroctl/command_line.h"
#include "tavroctl/device_applications.h"
#include "tavroctl/service_address.h"
#include "tavroctl/service_url.h"
#include "tavroctl/shared_options.h"
#include "tavroserver.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

struct Options {
    std::optional<std::string> service;
    Settings settings;  ///< those not given are empty
    bool force = false;
};

/// A serial number that no second device folder is likely to get.
std::string newSerialNumber() {
    std::random_device random;
    std::string digits;
    for (int count = 0; count < 8; ++count)
        digits += "0123456789ABCDEF"[random() % 16];
    return "DESKTOP-" + digits;
}

/// Where the device keeps its books.
std::string defaultDownloadFolder() {
    return device_root::root() + "/mnt/ext1/Tavro";
}

/// Full path of the download folder `folder`. Throws UsageError when log-out could not delete it.
std::string plainFolder(const std::string& folder) {
    std::string path = absolutePath(folder);
    if (!device_root::isPlainWord(path))
        throw UsageError(
            "'" + path +
            "' is no folder for books: log-out gives its path to the shell as it is, so "
            "it may hold letters, digits and " +
            device_root::plain_punctuation + " only");
    return path;
}

/// Sees that log-out may remove the files of `folder`, as it will. Asks when it holds others than
/// the account's books. Throws UsageError, Failure.
void requireBookFolder(const Account& account, const std::string& folder, bool force,
                       const Output& output) {
    const std::string removal = "log-out removes all files directly in the folder of the books";
    const std::string reason = whyHarmful(account, folder);
    if (!reason.empty())
        throw UsageError("'" + folder + "' is no folder for books: " + reason + ", and " + removal);
    const std::string configured = account.downloadFolder();
    if (force || (!configured.empty() && isSameFolder(folder, configured)))
        return;
    const auto foreign = foreignFiles(account, folder);
    if (foreign.empty())
        return;
    const std::string held = folder + " holds files that are no books of the account (" +
                             std::to_string(foreign.size()) + ", one is " + foreign.front() +
                             "), and " + removal;
    confirm(output, displayable(held) + ".\nTake it?", held + ": say --force to take it");
}

/// The values to write: those given, and a default for each required one that is missing.
Settings completed(const Account& account, const Settings& given) {
    Settings settings;
    for (const auto& [key, value] : given)
        if (!value.empty())
            settings[key] = key == account_keys::download_folder ? plainFolder(value) : value;
    const Settings defaults{{account_keys::serial_number, newSerialNumber()},
                            {account_keys::consumer_id, "tavro-desktop"},
                            {account_keys::consumer_password, "tavro-desktop"},
                            {account_keys::device_type, "desktop"},
                            {account_keys::download_folder, defaultDownloadFolder()}};
    for (const auto& [key, value] : defaults)
        if (account.value(key).empty())
            settings.emplace(key, value);
    return settings;
}

/// The server settings that send everything to the service at `address`.
Settings serverSettings(const std::string& address) {
    const ServiceAddress service = parseServiceAddress(address);
    const std::string host = "http://" + service.host;
    return {{connection_keys::base_api_url, host + service_paths::device_api},
            {connection_keys::api_port, service.port},
            {connection_keys::upload_url, host + service_paths::upload},
            {connection_keys::upload_port, service.port},
            {connection_keys::download_url, host + service_paths::download},
            {connection_keys::download_port, service.port}};
}

/// Writes `settings` into the device's server-settings file and sees that the library takes them.
void storeServerSettings(const Settings& settings) {
    const fs::path file = device_paths::serverSettings();
    fs::create_directories(file.parent_path());
    storeSettings(file, settings);
    const TavroServer reader("");
    if (TavroServer::baseApiUrl != settings.at(connection_keys::base_api_url))
        throw Failure("the library does not read " + file.string() +
                          " on a device with partner code " +
                          std::to_string(GetCustomizedPartner()),
                      "take partner code 12 or 16");
}

/// Makes the download folder, if it is not there: one that was `named` now, or that of an account
/// without books. Otherwise its card is out, and a folder in its place would have all books
/// downloaded again. @return what to tell of books that are missing with their folder.
std::optional<Failure> makeDownloadFolder(const Account& account, bool named) {
    const std::string folder = account.downloadFolder();
    const std::size_t books = exists(folder) ? 0 : mappedFiles(account).size();
    if (books == 0 || named)
        fs::create_directories(folder);
    if (books == 0)
        return std::nullopt;
    const std::string missing =
        counted(books, "book") + " of the book map " + (books == 1 ? "is" : "are") + " missing";
    if (named)
        return Failure(missing + " in the new folder " + folder,
                       "move the books there, or run 'tavroctl download --all'");
    return Failure(missing + " with the download folder " + folder, missing_folder_advice);
}

void setUp(const Options& options, Account& account, const Output& output) {
    const Settings settings = completed(account, options.settings);
    const Settings server = options.service ? serverSettings(*options.service) : Settings{};
    const bool named = !options.settings.at(account_keys::download_folder).empty();
    if (named)
        requireBookFolder(account, settings.at(account_keys::download_folder), options.force,
                          output);
    makeDevice();
    if (!server.empty())
        storeServerSettings(server);

    fs::create_directories(account.folder());
    const std::string formerEmail = account.value(account_keys::email);
    account.store(settings);
    if (account.value(account_keys::email) != formerEmail)
        account.forgetSession();
    const auto warning = makeDownloadFolder(account, named);
    output.summary({{"configuration", account.folder()},
                    {"downloadFolder", account.downloadFolder()},
                    {"serialNumber", account.value(account_keys::serial_number)},
                    {"email", account.value(account_keys::email)},
                    {"service", serviceUrl()}});
    if (warning)
        output.error(*warning);
}

}  // namespace

void addSetup(CommandLine& commandLine) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = commandLine.add(
        "setup",
        "Make the device's folder and write the account configuration, keeping what it holds",
        "setup --service http://127.0.0.1:8080 --email ada@reader.example",
        withOptions(setUp, options));
    command.add_option("--service", options->service, "The service, as http://HOST:PORT");
    const auto add = [&](const char* name, const char* key, const char* description) {
        addSendable(command, name, options->settings[key], description);
    };
    addEmailAddress(command, "--email", options->settings[account_keys::email],
                    "E-mail address of the account");
    add("--first-name", account_keys::first_name, "First name, sent by signup");
    add("--last-name", account_keys::last_name, "Last name, sent by signup");
    add("--serial", account_keys::serial_number, "Serial number (default: a random one)");
    add("--consumer", account_keys::consumer_id, "Consumer ID sent at registration");
    add("--type", account_keys::device_type, "Device type sent at registration");
    command.add_option("--folder", options->settings[account_keys::download_folder],
                       "Folder of the downloaded books");
    addFlag(command, "--force", options->force,
            "Take a folder with other files, too, which log-out will remove");
}

}  // namespace tavro::tools
