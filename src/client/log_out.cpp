#include <lectern.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/device_paths.h"
#include "tavro.h"
#include "tavro_client.h"

namespace {

constexpr int every_application = -3;
constexpr int account_removed = 215;

/// Has the shell run `command`; log-out goes on whatever comes of it.
void run(const std::string& command) {
    // NOLINTNEXTLINE(cert-env33-c): log-out consists of these commands
    [[maybe_unused]] const int status = std::system(command.c_str());
}

}  // namespace

void TavroClient::LogOut() {
    Tavro session;
    session.init(device_paths::configuration_folder);
    const std::map<std::string, int> books = session.GetBooks();
    const std::string syncFolder = GetSyncFolder();  // before the file that names it goes
    // Folder and name are joined as they are stored: a folder without a last "/" joins to no path
    // of a book, whose file then goes with all others below.
    for (const auto& [name, itemId] : books)
        ::unlink((syncFolder + name).c_str());
    run(std::string("rm -rf ") + device_paths::configuration_folder);
    run(std::string("rm -rf ") + device_paths::hidden_files_folder);
    // Without -r: subfolders and hidden files are the user's.
    if (!syncFolder.empty())
        run("rm " + syncFolder + "/*");
    SendEventTo(every_application, account_removed, 0, 0);
    run("killall browser.app");
}
