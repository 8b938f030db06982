#include "account/book_map.h"

#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "account/files.h"
#include "account/journal.h"
#include "account/own_files.h"
#include "bookmap.h"
#include "platform/account_files.h"
#include "store/locked_book_map.h"

namespace tavro::tools {

namespace {

std::string mapFile(const Account& account) {
    return account.file(account_files::book_map);
}

/// Loads the open, locked `map`; an empty file, which the library does not load, has no entries.
void load(BookMap& map) {
    struct stat status = {};
    map.bookMap.clear();
    if (map.loadMapInt() != 0 && (::fstat(map.fd_, &status) != 0 || status.st_size > 0))
        throwUnreadable(map.path);
}

/// The entries of the book map in the file `path`.
MappedFiles entriesIn(const std::string& path) {
    if (!exists(path))
        return {};  // asking the book map would create the file
    BookMap map;
    map.path = path;
    const store::LockedBookMap locked(map);
    if (!locked)
        throwUnreadable(path);
    load(map);
    return map.bookMap;
}

/// Old names of the changes that still have to reach the service.
std::set<std::string> changedNames(const Account& account) {
    std::set<std::string> names;
    for (const Change& change : pendingChanges(account))
        names.insert(change.oldName);
    return names;
}

/// Items that `present` has under a name that `saved` does not know: an upload has moved them.
std::set<int> movedItems(const MappedFiles& saved, const MappedFiles& present) {
    std::set<int> items;
    for (const auto& [name, item] : present)
        if (const auto former = saved.find(name); former == saved.end() || former->second != item)
            items.insert(item);
    return items;
}

/// Entries of `saved` that `present` has lost: their books lie in the download folder, or a change
/// of them still has to be sent; and no upload has moved them to another name.
MappedFiles lostEntries(const Account& account, const MappedFiles& saved,
                        const MappedFiles& present) {
    const auto moved = movedItems(saved, present);
    const auto changed = changedNames(account);
    const std::string folder = account.downloadFolder().string() + "/";
    MappedFiles lost;
    for (const auto& [name, item] : saved) {
        const bool wanted = changed.count(name) > 0 || isRegularFile(folder + name);
        if (present.count(name) == 0 && moved.count(item) == 0 && wanted)
            lost.emplace(name, item);
    }
    return lost;
}

/// Puts entries of `saved` that the map has lost back into it. @return the map then.
MappedFiles repaired(const Account& account, const MappedFiles& saved) {
    MappedFiles present = mappedFiles(account);
    const MappedFiles lost = lostEntries(account, saved, present);
    if (lost.empty())
        return present;
    MappedFiles whole = present;
    whole.insert(lost.begin(), lost.end());
    requireBookMap(account, present, whole);
    return whole;
}

/// Copies the map while nobody writes it.
void copyMap(const Account& account, const std::string& copy) {
    BookMap map;
    map.path = mapFile(account);
    const store::LockedBookMap locked(map);
    if (!locked)
        throwUnreadable(map.path);
    replaceByCopy(copy, map.path);
}

}  // namespace

Failure unknownToBookMap(const std::string& name) {
    return Failure("the book map does not know " + name, "name one of the files of 'tavroctl map'");
}

MappedFiles mappedFiles(const Account& account) {
    return entriesIn(mapFile(account));
}

void requireBookMap(const Account& account, const MappedFiles& before, MappedFiles expected) {
    BookMap map;
    map.path = mapFile(account);
    const store::LockedBookMap locked(map);
    if (!locked)
        throwUnreadable(map.path);
    load(map);
    for (const auto& entry : map.bookMap)
        if (before.count(entry.first) == 0 && isRegularFile(account.bookFile(entry.first)))
            expected.insert(entry);
    for (int attempt = 0; attempt < 2 && map.bookMap != expected; ++attempt) {
        map.bookMap = expected;
        map.saveMapInt();
        load(map);
    }
    if (map.bookMap == expected)
        return;
    // No map is better than a wrong one: the copy gives an empty one its entries back.
    [[maybe_unused]] const int truncated = ::ftruncate(map.fd_, 0);
    throwNotWritten(map.path);
}

void repairAndCopyBookMap(const Account& account) {
    const std::string copy = account.file(own_files::book_map_copy);
    const MappedFiles saved = entriesIn(copy);
    if (repaired(account, saved) != saved)
        copyMap(account, copy);
}

}  // namespace tavro::tools
