#pragma once

#include <string>

#include "account/account.h"
#include "tavro_entry_points.h"

namespace tavro::tools {

/// Full path of the file that the command line calls `file`: one without "/" is in the download
/// folder. Throws UsageError unless `account` is the device's own, Failure.
std::string fullPath(const Account& account, const std::string& file);

/// The library browser's record of one book, with the texts that the library put into it.
class BookRecord {
public:
    /// Asks for the book whose file is `path`. Throws Failure when the library does not know it.
    BookRecord(const Account& account, const std::string& path);
    ~BookRecord();
    BookRecord(const BookRecord&) = delete;
    BookRecord& operator=(const BookRecord&) = delete;

    const tavro_book_info* operator->() const { return &record_; }

private:
    tavro_book_info record_{};
};

}  // namespace tavro::tools
