#include "account/book_map.h"

#include <set>

#include "account/files.h"
#include "account/own_files.h"
#include "bookmap.h"
#include "platform/account_files.h"
#include "store/locked_book_map.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

std::string mapFile(const Account& account) {
    return account.file(account_files::book_map);
}

/// The entries of the book map in the file `path`.
MappedFiles entriesIn(const std::string& path) {
    if (!fs::exists(path))
        return {};  // asking the book map would create the file
    BookMap map;
    map.path = path;
    return map.GetBookMap();
}

/// Entries of `saved` that `present` has lost: their books lie in the download folder, and no other
/// file has taken their place.
MappedFiles lostEntries(const Account& account, const MappedFiles& saved,
                        const MappedFiles& present) {
    std::set<int> items;
    for (const auto& entry : present)
        items.insert(entry.second);
    const fs::path folder = account.downloadFolder();
    MappedFiles lost;
    for (const auto& [name, item] : saved)
        if (items.count(item) == 0 && present.count(name) == 0 &&
            fs::is_regular_file(folder / name))
            lost.emplace(name, item);
    return lost;
}

void putBack(const Account& account, const MappedFiles& entries) {
    BookMap map;
    map.path = mapFile(account);
    const store::LockedBookMap locked(map);
    if (!locked)
        throwCannotWrite(map.path);
    map.loadMapInt();
    map.bookMap.insert(entries.begin(), entries.end());
    map.saveMapInt();
}

/// Puts entries of `saved` that the map has lost back into it. @return the map then.
MappedFiles repaired(const Account& account, const MappedFiles& saved) {
    const MappedFiles present = mappedFiles(account);
    const MappedFiles lost = lostEntries(account, saved, present);
    if (lost.empty())
        return present;
    putBack(account, lost);
    MappedFiles repairedMap = mappedFiles(account);
    if (!lostEntries(account, saved, repairedMap).empty())
        throwCannotWrite(mapFile(account));
    return repairedMap;
}

/// Copies the map while nobody writes it.
void copyMap(const Account& account, const std::string& copy) {
    BookMap map;
    map.path = mapFile(account);
    const store::LockedBookMap locked(map);
    replaceByCopy(copy, map.path);
}

}  // namespace

MappedFiles mappedFiles(const Account& account) {
    return entriesIn(mapFile(account));
}

void repairAndCopyBookMap(const Account& account) {
    const std::string copy = account.file(own_files::book_map_copy);
    const MappedFiles saved = entriesIn(copy);
    if (repaired(account, saved) != saved)
        copyMap(account, copy);
}

}  // namespace tavro::tools
