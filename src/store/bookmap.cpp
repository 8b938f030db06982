#include "bookmap.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/log.h"
#include "posix/files.h"
#include "posix/read_only_mapping.h"
#include "posix/retry_after_signal.h"
#include "store/locked_book_map.h"
#include "store/record_reader.h"
#include "store/record_writer.h"
#include "store/replace_content.h"

namespace {

/// The file holds an id in the device's own byte order.
using IdBytes = std::array<unsigned char, sizeof(std::int32_t)>;

int idFrom(const IdBytes& bytes) {
    std::int32_t id = 0;
    std::memcpy(&id, bytes.data(), bytes.size());
    return id;
}

/// A record of the file, in whose content the path lies.
struct Entry {
    std::string_view path;
    int id;
};

/// Whether `left` stands before `right` in the file.
bool isEarlier(const Entry& left, const Entry& right) {
    return left.path.data() < right.path.data();
}

bool byPath(const Entry& left, const Entry& right) {
    const int order = left.path.compare(right.path);
    return order == 0 ? isEarlier(left, right) : order < 0;
}

bool byId(const Entry& left, const Entry& right) {
    return left.id == right.id ? isEarlier(left, right) : left.id < right.id;
}

/// Sorts the records of a file, which mostly are in the order of their paths.
void sort(std::vector<Entry>& entries, bool (*order)(const Entry&, const Entry&)) {
    if (!std::is_sorted(entries.begin(), entries.end(), order))
        std::sort(entries.begin(), entries.end(), order);
}

}  // namespace

void BookMap::Add(const std::string& bookPath, int id) {
    std::string name = bookPath;  // which may be a key of the map that is loaded anew
    const store::LockedBookMap locked(*this);
    loadMapInt();
    bookMap[name] = id;
    idMap[id] = std::move(name);
    saveMapInt();
}

void BookMap::Remove(const std::string& bookPath) {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is for the same reason
    const std::string name = bookPath;
    const store::LockedBookMap locked(*this);
    loadMapInt();
    bookMap.erase(name);
    saveMapInt();
}

const std::map<std::string, int>& BookMap::GetBookMap() {
    const store::LockedBookMap locked(*this);
    loadMapInt();
    return bookMap;
}

std::map<int, std::string> BookMap::GetIdMap() {
    const store::LockedBookMap locked(*this);
    loadMapInt();
    return idMap;
}

int BookMap::LockFile() {
    UnlockFile();
    fd_ = ::open(path.c_str(), O_RDWR | O_CREAT, 0777);
    if (fd_ == -1) {
        fl_print_log2(platform::log_error, __FILE__, __LINE__, "int BookMap::LockFile()",
                      "[pid:%d]Condition: \"-1 != fd_\", return(\"FL_FAILED\")]Open failed with %d",
                      g_process_pid, errno);
        return -1;
    }
    if (posix::retryAfterSignal([this] { return ::flock(fd_, LOCK_EX); }) == -1) {
        UnlockFile();
        return -1;
    }
    return 0;
}

void BookMap::UnlockFile() {
    if (fd_ == -1)
        return;
    ::close(fd_);
    fd_ = -1;
}

int BookMap::loadMapInt() {
    if (fd_ == -1)
        return -1;
    // An empty file cannot be mapped: the maps then stay as they are.
    const posix::ReadOnlyMapping mapping(fd_);
    if (!mapping)
        return -1;
    std::vector<Entry> entries;
    store::RecordReader reader({mapping.data(), mapping.size()});
    std::string_view bookPath;
    for (IdBytes id = {}; reader.readText(bookPath) && reader.readWord(id);)
        entries.push_back({bookPath, idFrom(id)});
    sort(entries, byPath);
    store::replaceContent(bookMap, entries, &Entry::path, &Entry::id);
    sort(entries, byId);
    store::replaceContent(idMap, entries, &Entry::id, &Entry::path);
    return 0;
}

int BookMap::saveMapInt() {
    if (fd_ == -1)
        return -1;
    [[maybe_unused]] const int truncated = ::ftruncate(fd_, 0);
    ::lseek(fd_, 0, SEEK_SET);
    for (const auto& [bookPath, id] : bookMap) {
        store::writeText(fd_, bookPath);
        const auto word = static_cast<std::int32_t>(id);
        posix::writeUnchecked(fd_, &word, sizeof word);
    }
    return 0;
}
