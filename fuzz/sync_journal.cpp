/// The file of the sync journal. Promises: a file of any content loads; its records come newest
/// first, as many as were counted; written to another journal they read back.

#include <string>
#include <tuple>
#include <vector>

#include "require.h"
#include "support/temporary_folder.h"
#include "syncjournal.h"

namespace {

using Record = SyncJournal::Record;

bool equal(const Record& one, const Record& other) {
    return std::tie(one.oldName, one.newName, one.flag) ==
           std::tie(other.oldName, other.newName, other.flag);
}

/// The records of the journal `path`, the oldest first.
std::vector<Record> recordsOf(const std::string& path) {
    SyncJournal journal(path);
    require(journal.reload() == 0, "a journal that is there loads");
    std::vector<Record> records(journal.count());
    for (auto record = records.rbegin(); record != records.rend(); ++record)
        require(journal.pop(*record), "there are as many records as were counted");
    Record none;
    require(!journal.pop(none), "there are no more records than were counted");
    return records;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    const std::string hostile = folder / "hostile";
    writeFile(hostile, {reinterpret_cast<const char*>(data), size});
    const std::vector<Record> records = recordsOf(hostile);

    const std::string copy = folder / "copy";
    SyncJournal journal(copy);
    require(journal.clearFile() == 0, "a journal can be emptied");
    for (const Record& record : records)
        require(journal.push(record) == 0, "a record can be appended");
    const std::vector<Record> copied = recordsOf(copy);
    require(copied.size() == records.size() &&
                std::equal(records.begin(), records.end(), copied.begin(), equal),
            "what was stored reads back");
    return 0;
}
