#include "account/book_map.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "account/files.h"
#include "bookmap.h"
#include "platform/account_files.h"
#include "posix/read_only_mapping.h"
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

}  // namespace

Failure unknownToBookMap(const std::string& name) {
    return Failure("the book map does not know " + name, "name one of the files of 'tavroctl map'");
}

bool leadsOut(const std::string& name) {
    const std::filesystem::path path(name);
    return std::find(path.begin(), path.end(), "..") != path.end();
}

void forgetBook(const Account& account, const std::string& name) {
    BookMap map;
    map.path = mapFile(account);
    map.Remove(name);
}

MappedFiles mappedFiles(const Account& account) {
    BookMap map;
    map.path = mapFile(account);
    if (!exists(map.path))
        return {};  // asking the book map would create the file
    const store::LockedBookMap locked(map);
    if (!locked)
        throwUnreadable(map.path);
    load(map);
    return map.bookMap;
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

bool isBookMap(const Account& account, std::string_view content) {
    BookMap map;
    map.path = mapFile(account);
    if (!exists(map.path))
        return content.empty();
    const store::LockedBookMap locked(map);
    if (!locked)
        throwUnreadable(map.path);
    const posix::ReadOnlyMapping present(map.fd_);  // none of an empty file
    return present && std::string_view(present.data(), present.size()) == content;
}

}  // namespace tavro::tools
