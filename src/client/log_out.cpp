#include <lectern.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/device_paths.h"
#include "tavro.h"
#include "tavro_client.h"

namespace {

// What the platform wants to be told after a log-out; the meaning is its own.
constexpr int event_target = -3;
constexpr int event_type = 215;

/// Has the shell run `command`; log-out goes on whatever comes of it.
void run(const std::string& command) {
    [[maybe_unused]] const int status = std::system(command.c_str());
}

}  // namespace

void TavroClient::LogOut() {
    Tavro session;
    session.init(device_paths::configurationFolder());
    const std::map<std::string, int> books = session.GetBooks();
    const std::string syncFolder = GetSyncFolder();  // before the file that names it goes
    // Folder and name are joined as they are stored: a folder without a last "/" joins to no path
    // of a book, whose file then goes with all others below.
    for (const auto& [name, itemId] : books)
        ::unlink((syncFolder + name).c_str());
    run(std::string("rm -rf ") + device_paths::configurationFolder());
    run(std::string("rm -rf ") + device_paths::hiddenFilesFolder());
    // Without -r: subfolders and hidden files are the user's.
    if (!syncFolder.empty())
        run("rm " + syncFolder + "/*");
    SendEventTo(event_target, event_type, 0, 0);
    run("killall browser.app");
}
