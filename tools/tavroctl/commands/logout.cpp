#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <optional>

#include "account/account_lock.h"
#include "account/files.h"
#include "account/journal.h"
#include "console/confirmation.h"
#include "device_root/device_root.h"
#include "platform/device_paths.h"
#include "program/counted.h"
#include "program/failure.h"
#include "tavro_client.h"
#include "tavroctl/book_folder.h"
#include "tavroctl/command_line.h"
#include "tavroctl/shared_options.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// Says what `Log out?` is about.
std::string whatGoes(const Account& account, std::size_t files) {
    const std::size_t pending = pendingChanges(account).size();
    const std::string lost =
        pending == 0 ? "" : ", with " + counted(pending, "change") + " the service lacks";
    return "Log-out removes\n  the account's configuration folder " + account.folder() + lost +
           "\n  " + counted(files, "file") + " directly in the download folder " +
           account.downloadFolder().string() + "\n  the hidden files folder " +
           device_paths::hiddenFilesFolder() + "\n";
}

/// Sees that the shell, to which the library gives `folder` as it is, reads no other path.
void requirePlainFolder(const std::string& folder) {
    if (!folder.empty() && (folder[0] != '/' || !device_root::isPlainWord(folder)))
        throw Failure("log-out would have the shell read '" + folder + "' as something else",
                      "move the books to a folder with a plain name and name that with 'tavroctl "
                      "setup --folder'");
}

/// Sees that the files of `folder` are for log-out to remove, however it came to be configured.
void requireHarmlessFolder(const Account& account, const std::string& folder) {
    const std::string reason = folder.empty() ? "" : whyHarmful(account, folder);
    if (!reason.empty())
        throw Failure("log-out would remove the files of " + folder + ": " + reason,
                      "move the books to a folder of their own and name that with 'tavroctl setup "
                      "--folder'");
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
    if (exists(account.folder()))
        throw Failure("the configuration folder " + account.folder() + " is still there",
                      "check its permissions and run the same command again");
    if (const std::size_t undeleted = removedAtLogOut(folder).size(); undeleted > 0)
        throw Failure("log-out has left " + counted(undeleted, "file") + " in " + folder,
                      "check its permissions and remove them");
}

void logOut(bool confirmed, const Account& account, const Output& output) {
    const std::string folder = account.downloadFolder();
    requirePlainFolder(folder);
    requireHarmlessFolder(account, folder);
    const std::size_t files = removedAtLogOut(folder).size();
    if (!confirmed)
        confirm(output, whatGoes(account, files) + "Log out?",
                "standard input is no terminal to ask for a confirmation: say --yes");
    logOutNow(account);
    requireGone(account, folder);

    const auto left = namesIn(folder);
    const std::string rest = left.empty() ? "nothing"
                             : left.size() == 1
                                 ? "1 subfolder or hidden file"
                                 : std::to_string(left.size()) + " subfolders and hidden files";
    output.result({{"loggedOut", true}, {"removed", files}, {"left", left}},
                  "Logged out. The account is gone" +
                      (folder.empty() ? "."
                                      : ", and " + counted(files, "file") + " of " + folder +
                                            ", where " + rest + " stays."));
}

}  // namespace

void addLogout(CommandLine& commandLine) {
    const auto yes = std::make_shared<bool>(false);
    CLI::App& command =
        commandLine.add("logout", "Remove all local state of the account and its books", "logout",
                        withOptions(logOut, yes));
    addFlag(command, "--yes", *yes, "Without asking first");
}

}  // namespace tavro::tools
