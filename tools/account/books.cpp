#include "account/books.h"

#include <filesystem>

#include "account/book_map.h"
#include "account/files.h"
#include "account/journal.h"
#include "program/failure.h"

namespace fs = std::filesystem;

namespace tavro::tools {

std::map<int, std::vector<std::string>> presentFiles(const Account& account) {
    const std::string folder = account.downloadFolder().string() + "/";
    std::map<int, std::vector<std::string>> present;
    const auto map = mappedFiles(account);
    for (const auto& [name, item] : map)
        if (!leadsOut(name) && isRegularFile(folder + name))
            present[item].push_back(name);
    for (const Change& change : pendingChanges(account))
        if (const auto book = map.find(change.oldName); book != map.end() &&
                                                        map.count(change.newName) == 0 &&
                                                        isRegularFile(folder + change.newName))
            present[book->second].push_back(change.newName);
    return present;
}

void requireDownloadFolder(const Account& account) {
    const std::string folder = account.downloadFolder();
    if (exists(folder))
        return;
    if (!mappedFiles(account).empty())
        throw Failure("the download folder " + folder + " is missing", missing_folder_advice);
    fs::create_directories(folder);
}

}  // namespace tavro::tools
