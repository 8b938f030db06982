#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "books/book_reader.h"
#include "posix/temporary_file.h"
#include "state/book.h"
#include "state/database.h"

namespace tavro::service {

/// Begins the names of uploads that are still being received.
inline constexpr const char* unfinished_upload = "receiving-";

/// Told of a scan, how many of so many files it has looked at. What it throws ends the scan, and
/// what was read until then is kept.
using ScanProgress = std::function<void(std::size_t done, std::size_t all)>;

/// The folder for the uploads of one service.
class UploadFolder {
public:
    /// Makes the folder: beside the state file `database`, or, if that is empty, a temporary one
    /// that goes with the object. Throws `std::system_error`.
    explicit UploadFolder(const std::filesystem::path& database);

    ~UploadFolder();
    UploadFolder(const UploadFolder&) = delete;
    UploadFolder& operator=(const UploadFolder&) = delete;

    /// Path of the folder.
    const std::filesystem::path& path() const { return path_; }

private:
    bool temporary_;
    std::filesystem::path path_;
};

/// The books of a folder, one item for each file, and what devices uploaded in their place.
class Catalogue {
public:
    /// Serves the files below `folder` (none if it is empty) as of the last refresh, remembers them
    /// in `database`, and keeps uploads in the folder `uploads`, where it removes those that were
    /// never received to the end. `report` is told of books and folders that cannot be read. Throws
    /// `std::runtime_error` if `database` remembers the files of another folder.
    Catalogue(SQLite::Database& database, std::filesystem::path folder,
              std::filesystem::path uploads, std::function<void(const std::string&)> report);

    /// Compares the items with the folder and reads the files that are new or changed. A file that
    /// cannot be read is reported once and skipped; an item that it had before stays as it was, as
    /// do all items of a folder that cannot be read. `progress` may be empty.
    void refresh(const ScanProgress& progress = {});

    /// All items in the order of their paths, deleted ones among them.
    std::vector<Book> books();

    /// How many items there are, without deleted ones.
    int count();

    /// The item `id`, unless there is none or it was deleted.
    std::optional<Book> find(int id);

    /// Makes `upload`, a file in the folder of the uploads, the content of the item `id`, announced
    /// as `fileName`, or by the item's own name if that is empty. Throws `std::system_error`.
    void replaceContent(int id, posix::TemporaryFile& upload, const std::string& fileName);

private:
    using Stamp = std::pair<std::int64_t, std::int64_t>;  // size and time of modification
    struct Known {
        int id;
        Stamp stamp;
        bool deleted;
    };

    void updateAll(const std::set<std::string>& files, const std::map<std::string, Known>& known,
                   const ScanProgress& progress);
    void markDeleted(const Known& item, bool deleted);
    std::map<std::string, Known> knownItems();
    void update(const std::string& path, const std::map<std::string, Known>& known);
    void store(const std::string& path, int id, Stamp stamp, const BookDetails& details);
    int newId(const std::string& path);
    Book bookOf(const SQLite::Statement& row) const;
    std::string uploadOf(int id);
    void removeUnfinishedUploads();

    SQLite::Database& database_;
    std::filesystem::path folder_;
    std::filesystem::path uploads_;
    std::function<void(const std::string&)> report_;
    std::map<std::string, Stamp> unreadable_;
    std::map<std::string, std::string> unread_;  // parts of the folder at the last refresh
};

}  // namespace tavro::service
