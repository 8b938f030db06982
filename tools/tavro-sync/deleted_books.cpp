#include "tavro-sync/deleted_books.h"

#include <filesystem>

#include "account/book_map.h"
#include "account/journal.h"
#include "account/kept_book_map.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// The names that a change in the journal speaks of.
std::set<std::string> namesInJournal(const Account& account) {
    std::set<std::string> names;
    for (const auto& change : pendingChanges(account))
        names.insert({change.oldName, change.newName});
    return names;
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

}  // namespace

DeletedFiles removeBooks(const Account& account, const std::string& folder,
                         const std::set<int>& items) {
    DeletedFiles files;
    if (items.empty())
        return files;
    const auto changed = namesInJournal(account);
    const auto before = mappedFiles(account);
    for (const auto& [name, item] : before) {
        if (items.count(item) == 0)
            continue;
        auto& kind = leadsOut(name)                   ? files.strange
                     : changed.count(name) > 0        ? files.changed
                     : isRemoved(folder + "/" + name) ? files.removed
                                                      : files.stuck;
        kind.push_back(name);
    }
    if (files.removed.empty())
        return files;
    auto left = before;
    for (const auto& name : files.removed)
        left.erase(name);
    requireBookMap(account, before, left);
    repairAndCopyBookMap(account);
    return files;
}

}  // namespace tavro::tools
