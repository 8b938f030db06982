#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "account/book_map.h"
#include "store/record_reader.h"

namespace tavro::tools {

/// Walks over the records of a book map in memory, and stops before one that is cut.
class BookMapRecords {
public:
    /// Reads `content`, which must stay in place while the reader is used.
    explicit BookMapRecords(std::string_view content) : reader_(content) {}

    /// Goes to the next record. @return false when no whole one is left.
    bool next() {
        std::array<unsigned char, sizeof(std::int32_t)> word = {};
        if (!reader_.readText(name) || !reader_.readWord(word))
            return false;
        std::memcpy(&item, word.data(), word.size());  // in the device's own byte order
        length += name.size() + 1 + word.size();
        return true;
    }

    std::string_view name;   ///< of the record's file; lies in the content
    std::int32_t item = 0;   ///< to which the file belongs
    std::size_t length = 0;  ///< of all records until here, in bytes

private:
    store::RecordReader reader_;
};

/// The entries of the records `content`, of which the last one of a name counts.
inline MappedFiles bookMapEntries(std::string_view content) {
    MappedFiles entries;
    for (BookMapRecords records(content); records.next();)
        entries.insert_or_assign(entries.end(), std::string(records.name), records.item);
    return entries;
}

/// The bytes of the record that says that the file `name` belongs to `item`.
inline std::string bookMapRecord(const std::string& name, std::int32_t item) {
    std::string record(name.c_str(), name.size() + 1);
    return record.append(reinterpret_cast<const char*>(&item), sizeof item);
}

}  // namespace tavro::tools
