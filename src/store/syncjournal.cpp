#include "syncjournal.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "posix/file_descriptor.h"
#include "posix/files.h"
#include "posix/read_only_mapping.h"
#include "posix/retry_after_signal.h"
#include "store/record_reader.h"
#include "store/record_writer.h"

namespace {

using posix::FileDescriptor;
using Word = std::array<unsigned char, 4>;

constexpr mode_t create_mode = 0600;
constexpr Word set_flag = {1, 0, 0, 0};  // little-endian on every machine
constexpr Word clear_flag = {0, 0, 0, 0};

/// Reads the next record; false when no complete one is left.
bool readRecord(store::RecordReader& reader, SyncJournal::Record& record) {
    std::string_view oldName;
    std::string_view newName;
    Word flag = {};
    if (!reader.readText(oldName) || !reader.readText(newName) || !reader.readWord(flag))
        return false;
    record.oldName = oldName;
    record.newName = newName;
    record.flag = flag == set_flag;
    return true;
}

}  // namespace

SyncJournal::SyncJournal(const std::string& journalPath) : path(journalPath) {}

int SyncJournal::reload() {
    FileDescriptor file(::open(path.c_str(), O_RDONLY));
    if (!file)
        return -1;
    // The system refuses this lock on a descriptor that only reads, so that a reader never waits
    // for a writer; what is appended from here on is simply not seen.
    [[maybe_unused]] const int refused = ::lockf(file.get(), F_LOCK, 0);
    if (const posix::ReadOnlyMapping mapping(file.get()); mapping) {
        records.clear();
        store::RecordReader reader({mapping.data(), mapping.size()});
        for (Record record; readRecord(reader, record);)
            records.push_back(std::move(record));
    }
    [[maybe_unused]] const int unlocked = ::lockf(file.get(), F_ULOCK, 0);
    return file.close();
}

int SyncJournal::clearFile() {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CREAT | O_TRUNC, create_mode));
    return file ? file.close() : -1;
}

unsigned SyncJournal::count() const {
    return static_cast<unsigned>(records.size());
}

bool SyncJournal::pop(Record& out) {
    if (records.empty())
        return false;
    out = std::move(records.back());
    records.pop_back();
    return true;
}

int SyncJournal::push(const Record& record) {
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, create_mode));
    if (!file)
        return -1;
    posix::retryAfterSignal([&] { return ::lockf(file.get(), F_LOCK, 0); });
    store::writeText(file.get(), record.oldName);
    store::writeText(file.get(), record.newName);
    const Word& flag = record.flag ? set_flag : clear_flag;
    posix::writeUnchecked(file.get(), flag.data(), flag.size());
    [[maybe_unused]] const int unlocked = ::lockf(file.get(), F_ULOCK, 0);
    return file.close();
}
