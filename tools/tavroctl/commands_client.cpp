// What the device's applications have the library's client control do.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <optional>

#include "account/account_lock.h"
#include "account/journal_backup.h"
#include "account/own_files.h"
#include "console/quiet_library.h"
#include "platform/device_paths.h"
#include "session/account_keys.h"
#include "tavro_client.h"
#include "tavroctl/commands.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// Sees that the application `path` can be started. Throws Failure.
void requireApplication(const char* path) {
    std::error_code missing;
    if (!fs::is_regular_file(path, missing) || ::access(path, X_OK) != 0)
        throw Failure(std::string("there is no application ") + path,
                      "lay the device root out with scripts/device-root");
}

/// Waits until the started program has ended. Whoever takes its status, this does not.
void waitForProgram() {
    siginfo_t ended{};
    while (::waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR)
        continue;
}

/// What lies directly in `folder`, apart from what `isMeant` turns down.
template <typename Filter>
std::vector<std::string> namesIn(const fs::path& folder, Filter isMeant) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; entry != end; entry.increment(error))
        if (isMeant(*entry))
            names.push_back(entry->path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

/// Whether log-out removes `entry` of the download folder: a file that is not hidden.
bool goesAtLogOut(const fs::directory_entry& entry) {
    return entry.path().filename().string()[0] != '.' &&
           entry.symlink_status().type() != fs::file_type::directory;
}

/// Says what `Log out?` is about.
std::string whatGoes(const Account& account, std::size_t files) {
    const std::size_t pending = pendingChanges(account).size();
    const std::string lost =
        pending == 0 ? "" : ", with " + std::to_string(pending) + " changes the service lacks";
    return "Log-out removes\n  the account's configuration folder " + account.folder() + lost +
           "\n  " + std::to_string(files) + " files directly in the download folder " +
           account.downloadFolder().string() + "\n  the hidden files folder " +
           device_paths::hidden_files_folder + "\n";
}

/// Asks at the terminal whether to log out. Throws UsageError without one, Failure for a no.
void confirmLogOut(const Output& output, const std::string& what) {
    if (::isatty(STDIN_FILENO) != 1)
        throw UsageError("standard input is no terminal to ask for a confirmation: say --yes");
    output.prompt(what + "Log out? [y/N] ");
    std::string answer;
    std::getline(std::cin, answer);
    if (answer != "y" && answer != "Y" && answer != "yes")
        throw Failure("nothing was changed");
}

/// Sees that the shell, to which the library gives `folder` as it is, reads no other path.
void requirePlainFolder(const std::string& folder, const std::string& advice) {
    if (!folder.empty() && (folder[0] != '/' || !isPlainWord(folder)))
        throw Failure("log-out would have the shell read '" + folder + "' as something else",
                      advice);
}

/// Has the library log out, under the account's lock if there is an account.
void logOutNow(const Account& account) {
    std::optional<AccountLock> lock;
    std::error_code missing;
    if (fs::is_directory(account.folder(), missing))
        lock.emplace(account);
    // A relative path of the book map must hit nothing, and `rm` must not ask where nobody sees it.
    fs::current_path(account.folder(), missing);
    const posix::FileDescriptor nowhere(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    ::dup2(nowhere.get(), STDIN_FILENO);
    TavroClient().LogOut();
}

/// Sees that log-out has removed what it should, with the books out of `folder`. Throws Failure.
void requireGone(const Account& account, const std::string& folder) {
    std::error_code missing;
    if (fs::exists(account.folder(), missing))
        throw Failure("the configuration folder " + account.folder() + " is still there",
                      "check its permissions and run the same command again");
    if (const std::size_t undeleted = namesIn(folder, goesAtLogOut).size(); undeleted > 0)
        throw Failure(std::to_string(undeleted) + " files are still in " + folder,
                      "check its permissions and remove them");
}

}  // namespace

void requireDevicesFolder(const Arguments& arguments) {
    const fs::path own = device_paths::configuration_folder;
    const fs::path given = Account(arguments.folder).folder();
    if (given.lexically_normal() != own.lexically_normal())
        throw UsageError("this command works on the device's own configuration folder only, " +
                         own.string() + ": leave --config out");
}

bool isPlainWord(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char character) {
        return (character < 0x80 && std::isalnum(character) != 0) ||
               std::string_view(device_paths::plain_punctuation)
                       .find(static_cast<char>(character)) != std::string_view::npos;
    });
}

void syncInBackground(const Arguments& arguments, const Output& output) {
    requireDevicesFolder(arguments);
    requireApplication(device_paths::sync_application);
    TavroClient().StartSync();
    const std::string log = Account(arguments.folder).file(own_files::sync_log);
    output.result({{"started", true}, {"log", log}},
                  "The synchronisation has started; what it does stands in " + log);
}

void wizard(const Arguments& arguments, const Output& output) {
    requireDevicesFolder(arguments);
    requireApplication(device_paths::wizard_application);
    std::optional<QuietLibrary> divertedFromResult;
    if (arguments.json)
        divertedFromResult.emplace(output, true);
    std::signal(SIGINT, [](int) {});  // Ctrl-C is for the wizard, in which this handler is reset
    TavroClient client;
    if (client.StartLoginWizard() < 0)
        throw Failure("the login wizard cannot be started",
                      "lay the device root out with scripts/device-root again");
    waitForProgram();
    if (!client.IsLoggedIn())
        throw Failure("nobody is logged in", "run 'tavroctl wizard' again, or 'tavroctl login'");
    const std::string email = Account(arguments.folder).value(account_keys::email);
    output.result({{"loggedIn", true}, {"account", email}},
                  "Logged in as " + displayable(email) + ".");
}

void logOut(const Arguments& arguments, const Output& output) {
    requireDevicesFolder(arguments);
    const Account account(arguments.folder);
    const std::string folder = account.downloadFolder();
    requirePlainFolder(folder,
                       "move the books to a folder with a plain name and name that with 'tavroctl "
                       "setup --folder'");
    requirePlainFolder(account.folder(), "build with a TAVRO_DEVICE_ROOT that has a plain name");
    const std::size_t files = namesIn(folder, goesAtLogOut).size();
    if (!arguments.yes)
        confirmLogOut(output, whatGoes(account, files));
    logOutNow(account);
    requireGone(account, folder);

    const auto left = namesIn(folder, [](const auto&) { return true; });
    const std::string rest =
        left.empty() ? "nothing" : std::to_string(left.size()) + " subfolders and hidden files";
    output.result({{"loggedOut", true}, {"removed", files}, {"left", left}},
                  "Logged out. The account is gone" +
                      (folder.empty() ? "."
                                      : ", and " + std::to_string(files) + " files of " + folder +
                                            ", where " + rest + " stays."));
}

}  // namespace tavro::tools
