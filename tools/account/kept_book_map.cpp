#include "account/kept_book_map.h"

#include <unistd.h>

#include <set>
#include <utility>

#include "account/files.h"
#include "account/journal.h"
#include "account/own_files.h"

namespace tavro::tools {

namespace {

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

/// Entries of `saved` that `present` has lost: their books lie in the download folder, or it cannot
/// be seen, as with its card out, or a change of them still has to be sent; and no upload has moved
/// them to another name.
MappedFiles lostEntries(const Account& account, const MappedFiles& saved,
                        const MappedFiles& present) {
    const auto moved = movedItems(saved, present);
    const auto changed = changedNames(account);
    const std::string folder = account.downloadFolder().string() + "/";
    const bool isSeen = ::access(folder.c_str(), X_OK) == 0;
    MappedFiles lost;
    for (const auto& [name, item] : saved) {
        if (present.count(name) > 0 || moved.count(item) > 0)
            continue;
        if (!isSeen || changed.count(name) > 0 || isRegularFile(folder + name))
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

}  // namespace

KeptBookMap::KeptBookMap(const Account& account)
    : account_(account), copy_(account.file(own_files::book_map_copy)) {
    repairAndCopy();
}

void KeptBookMap::prepare() {
    if (!isCopied_ || !isBookMap(account_, map_.bytes()))
        repairAndCopy();
}

void KeptBookMap::require(const std::string& name, int item) {
    isCopied_ = false;
    map_.set(name, item);
    isExpected_ = isBookMap(account_, map_.bytes());
    if (isExpected_)
        return;
    const MappedFiles expected = map_.entries();
    requireBookMap(account_, expected, expected);
}

void KeptBookMap::copy(const std::string& name, int item) {
    if (!isExpected_)  // entries that others have added may stand there, too
        return repairAndCopy();
    copy_.add(name, item, map_);
    isCopied_ = true;
}

/// Frees the copy from what does not count. Where the disk is full that can wait: an entry is never
/// added behind a cut one.
void KeptBookMap::tidy() {
    try {
        copy_.replace(map_);
    } catch (const Failure&) {
        return;
    }
}

void KeptBookMap::repairAndCopy() {
    isCopied_ = false;
    const MappedFiles saved = copy_.read();
    const MappedFiles entries = repaired(account_, saved);
    map_ = BookMapImage(entries);
    if (entries != saved)
        copy_.replace(map_);
    else if (!copy_.isTidy())
        tidy();
    isCopied_ = true;
}

}  // namespace tavro::tools
