#include "tavro-sync/deleted_books.h"

#include <algorithm>
#include <filesystem>

#include "account/book_map.h"
#include "account/books.h"
#include "account/journal_backup.h"
#include "platform/account_files.h"
#include "store/locked_book_map.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// The names that a change in the journal speaks of.
std::set<std::string> changedNames(const Account& account) {
    std::set<std::string> names;
    for (const auto& change : pendingChanges(account))
        names.insert({change.oldName, change.newName});
    return names;
}

/// Whether `name`, which the service has chosen, leads out of the folder that it is relative to.
bool leadsOut(const std::string& name) {
    const fs::path path(name);
    return std::find(path.begin(), path.end(), "..") != path.end();
}

/// Removes the file `path`. @return whether there is none now.
bool isRemoved(const fs::path& path) {
    std::error_code error;
    const auto type = fs::symlink_status(path, error).type();
    if (type == fs::file_type::not_found)
        return true;
    return (type == fs::file_type::regular || type == fs::file_type::symlink) &&
           fs::remove(path, error);
}

/// Takes `names` out of the book map, in one operation on its file.
void forget(const Account& account, const std::vector<std::string>& names) {
    if (names.empty())
        return;
    BookMap map;
    map.path = account.file(account_files::book_map);
    const store::LockedBookMap locked(map);
    if (!locked)
        return;
    map.loadMapInt();
    for (const auto& name : names)
        map.bookMap.erase(name);
    map.saveMapInt();
}

}  // namespace

DeletedFiles removeBooks(const Account& account, const std::string& folder,
                         const std::set<int>& items) {
    const auto changed = changedNames(account);
    DeletedFiles files;
    for (const auto& [name, item] : mappedFiles(account)) {
        if (items.count(item) == 0)
            continue;
        auto& kind = leadsOut(name)                   ? files.strange
                     : changed.count(name) > 0        ? files.changed
                     : isRemoved(folder + "/" + name) ? files.removed
                                                      : files.stuck;
        kind.push_back(name);
    }
    forget(account, files.removed);
    repairAndCopyBookMap(account);
    return files;
}

}  // namespace tavro::tools
