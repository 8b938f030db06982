#include "book_map_backup.h"

#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "atomic_file.h"
#include "operations.h"

namespace fs = std::filesystem;

namespace reader {

namespace {

using Map = std::map<std::string, int>;

std::string mapFile(const Account& account) {
    return account.file(Tavro::list_file);
}

Map mapIn(const std::string& file) {
    if (!fs::exists(file))
        return {};  // asking the book map would create the file
    BookMap map;
    map.path = file;
    return map.GetBookMap();
}

/// Entries of `saved` that `present` has lost: their books lie in the download folder, and no other
/// file has taken their place.
Map lostEntries(const Account& account, const Map& saved, const Map& present) {
    std::set<int> items;
    for (const auto& entry : present)
        items.insert(entry.second);
    const fs::path folder = account.downloadFolder();
    Map lost;
    for (const auto& [name, item] : saved)
        if (items.count(item) == 0 && present.count(name) == 0 &&
            fs::is_regular_file(folder / name))
            lost.emplace(name, item);
    return lost;
}

void putBack(const Account& account, const Map& entries) {
    BookMap map;
    map.path = mapFile(account);
    if (map.LockFile() != 0)
        throwCannotWrite(map.path);
    map.loadMapInt();
    map.bookMap.insert(entries.begin(), entries.end());
    map.saveMapInt();
    map.UnlockFile();
}

/// Copies the map while nobody writes it.
void copyMap(const Account& account, const std::string& target) {
    BookMap map;
    map.path = mapFile(account);
    map.LockFile();
    copyAtomically(map.path, target);
    map.UnlockFile();
}

}  // namespace

void secureBookMap(const Account& account) {
    const std::string copy = mapFile(account) + "_saved";
    const Map saved = mapIn(copy);
    Map present = mapIn(mapFile(account));
    if (present == saved)
        return;
    if (const Map lost = lostEntries(account, saved, present); !lost.empty()) {
        putBack(account, lost);
        present = mapIn(mapFile(account));
        if (!lostEntries(account, saved, present).empty())
            throwCannotWrite(mapFile(account));
    }
    copyMap(account, copy);
}

}  // namespace reader
