// The files of the store: the library against the same calls of the system, one after the other.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <memory>

#include "bookmap.h"
#include "posix/file_descriptor.h"
#include "support/require.h"
#include "support/subject.h"
#include "support/temporary_folder.h"
#include "syncjournal.h"

namespace bench {

namespace {

using posix::FileDescriptor;

/// A file of a store, with a name for each of its records.
struct Store {
    TemporaryFolder folder;
    std::string path = folder / "store";
    std::vector<std::string> names;
    std::string content;  ///< where a mapping is copied to

    explicit Store(std::int64_t entries) {
        for (std::int64_t entry = 0; entry < entries; ++entry)
            names.push_back("The title of book " + std::to_string(1'000'000 + entry) + ".epub");
    }
};

void write(const FileDescriptor& file, const void* data, std::size_t size) {
    require(::write(file.get(), data, size) == static_cast<ssize_t>(size), "a write is whole");
}

void writeName(const FileDescriptor& file, const std::string& name) {
    write(file, name.c_str(), name.size() + 1);
}

/// Maps the open file and copies its bytes.
void copyMapping(const FileDescriptor& file, std::string& content) {
    struct stat status = {};
    ::fstat(file.get(), &status);
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const data = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, file.get(), 0);
    require(data != MAP_FAILED, "the file is mapped");
    content.resize(size);
    std::memcpy(content.data(), data, size);
    ::munmap(data, size);
}

FileDescriptor lockedMap(const Store& store) {
    FileDescriptor file(::open(store.path.c_str(), O_RDWR | O_CREAT, 0777));
    ::flock(file.get(), LOCK_EX);
    return file;
}

void writeMap(const FileDescriptor& file, const Store& store) {
    require(::ftruncate(file.get(), 0) == 0, "the file is emptied");
    ::lseek(file.get(), 0, SEEK_SET);
    std::int32_t id = 0;
    for (const std::string& name : store.names) {
        writeName(file, name);
        write(file, &++id, sizeof id);
    }
}

/// A map whose file has the records of `store`.
std::shared_ptr<BookMap> fullMap(const Store& store) {
    writeMap(lockedMap(store), store);
    auto map = std::make_shared<BookMap>();
    map->path = store.path;
    require(map->GetBookMap().size() == store.names.size(), "the map reads its file");
    return map;
}

Subject loadMap(std::int64_t entries) {
    const auto store = std::make_shared<Store>(entries);
    const auto map = fullMap(*store);
    return {inProcess([=] { map->GetBookMap(); }),
            inProcess([=] { copyMapping(lockedMap(*store), store->content); })};
}

Subject saveMap(std::int64_t entries) {
    const auto store = std::make_shared<Store>(entries);
    const auto map = fullMap(*store);
    const auto save = [=] {
        require(map->LockFile() == 0 && map->saveMapInt() == 0, "the map is saved");
        map->UnlockFile();
    };
    return {inProcess(save), inProcess([=] { writeMap(lockedMap(*store), *store); })};
}

Subject addToFullMap(std::int64_t entries) {
    const auto store = std::make_shared<Store>(entries);
    const auto map = fullMap(*store);
    const auto limit = [=] {
        const FileDescriptor file = lockedMap(*store);
        copyMapping(file, store->content);
        writeMap(file, *store);
    };
    return {inProcess([=] { map->Add(store->names.front(), 1); }), inProcess(limit)};
}

/// Appends a record as the journal does.
void appendRecord(const Store& store, const std::string& name) {
    constexpr unsigned char flag[] = {1, 0, 0, 0};
    const FileDescriptor file(::open(store.path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600));
    [[maybe_unused]] const int locked = ::lockf(file.get(), F_LOCK, 0);
    writeName(file, name);
    writeName(file, name);
    write(file, flag, sizeof flag);
    [[maybe_unused]] const int unlocked = ::lockf(file.get(), F_ULOCK, 0);
}

Subject pushToJournal(std::int64_t entries) {
    const auto store = std::make_shared<Store>(entries);
    const auto ours = [=] {
        SyncJournal journal(store->path);
        journal.clearFile();
        for (const std::string& name : store->names)
            require(journal.push({name, name, true}) == 0, "a record is pushed");
    };
    const auto limit = [=] {
        const FileDescriptor emptied(
            ::open(store->path.c_str(), O_RDONLY | O_CREAT | O_TRUNC, 0600));
        for (const std::string& name : store->names)
            appendRecord(*store, name);
    };
    return {inProcess(ours), inProcess(limit)};
}

Subject loadJournal(std::int64_t entries) {
    const auto store = std::make_shared<Store>(entries);
    for (const std::string& name : store->names)
        appendRecord(*store, name);
    const auto journal = std::make_shared<SyncJournal>(store->path);
    const auto ours = [=] {
        require(journal->reload() == 0 && journal->count() == store->names.size(),
                "the journal reads its file");
    };
    const auto limit = [=] {
        const FileDescriptor file(::open(store->path.c_str(), O_RDONLY));
        [[maybe_unused]] const int refused = ::lockf(file.get(), F_LOCK, 0);
        copyMapping(file, store->content);
        [[maybe_unused]] const int unlocked = ::lockf(file.get(), F_ULOCK, 0);
    };
    return {inProcess(ours), inProcess(limit)};
}

}  // namespace

std::vector<Family> storeFamilies() {
    const std::vector<std::int64_t> sizes = {100, 1000, 10000};
    return {{"map-load", "entries", sizes, loadMap},
            {"map-save", "entries", sizes, saveMap},
            {"map-add", "entries", sizes, addToFullMap},
            {"journal-push", "entries", sizes, pushToJournal},
            {"journal-load", "entries", sizes, loadJournal}};
}

}  // namespace bench
