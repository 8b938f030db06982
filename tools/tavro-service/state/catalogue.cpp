#include "state/catalogue.h"

#include <SQLiteCpp/Transaction.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "state/secrets.h"

namespace fs = std::filesystem;

namespace tavro::service {

namespace {

/// What `bookOf` reads, in its order.
const std::string select_books =
    "SELECT id, path, title, artist, isbn, isbn13, file_type, has_cover, deleted, upload,"
    " upload_name, size, modified FROM items ";

/// Whether `path` is `above` or lies below it; everything lies below "".
bool liesBelow(const std::string& path, const std::string& above) {
    return above.empty() || path == above || path.rfind(above + "/", 0) == 0;
}

/// What a folder holds, as far as it could be read.
struct FolderContent {
    std::set<std::string> files;                ///< books, relative to the folder and sorted
    std::map<std::string, std::string> unread;  ///< what could not be read ("": all) and why not

    /// Whether the file `path` is certainly not there.
    bool lacks(const std::string& path) const {
        return files.count(path) == 0 &&
               std::none_of(unread.begin(), unread.end(),
                            [&](const auto& entry) { return liesBelow(path, entry.first); });
    }
};

/// Lists the books below a folder; hidden ones are passed over.
class FolderReader {
public:
    explicit FolderReader(fs::path folder) : folder_(std::move(folder)) { readFolder(""); }

    FolderContent content;

private:
    void readFolder(const std::string& path) {
        std::error_code error;
        fs::directory_iterator entry(path.empty() ? folder_ : folder_ / path, error);
        while (!error && entry != fs::directory_iterator()) {
            readEntry(*entry, path);
            entry.increment(error);
        }
        if (error)
            content.unread[path] = error.message();
    }

    void readEntry(const fs::directory_entry& entry, const std::string& folder) {
        const std::string name = entry.path().filename();
        if (name.front() == '.')
            return;
        const std::string path = folder.empty() ? name : folder + "/" + name;
        std::error_code error;
        const bool link = entry.is_symlink(error);
        // What the folder itself tells of most files spares a look at each.
        const fs::file_type type =
            entry.is_regular_file(error) ? fs::file_type::regular : entry.status(error).type();
        if (type == fs::file_type::none || type == fs::file_type::unknown) {
            content.unread[path] = error.message();
        } else if (type == fs::file_type::directory && !link) {
            readFolder(path);
        } else if (type == fs::file_type::regular && !bookFileType(name).empty()) {
            content.files.insert(path);
        }
    }

    const fs::path folder_;
};

/// FNV-1a, whose value for a path is the same in every run and on every machine.
std::uint32_t hashOf(std::string_view text) {
    std::uint32_t hash = 2166136261u;
    for (const char character : text)
        hash = (hash ^ static_cast<unsigned char>(character)) * 16777619u;
    return hash;
}

/// `name` as it can stand in a header line.
std::string printable(std::string name) {
    std::replace_if(
        name.begin(), name.end(),
        [](char character) { return static_cast<unsigned char>(character) < ' '; }, '_');
    return name;
}

/// Keeps the state from being used for another folder of books than the one it was made for.
void claimFolder(SQLite::Database& database, const fs::path& folder) {
    if (folder.empty())
        return;
    const std::string canonical = fs::canonical(folder);
    query(database, "INSERT OR IGNORE INTO settings VALUES ('books', ?)", canonical).exec();
    auto row = query(database, "SELECT value FROM settings WHERE name = 'books'");
    row.executeStep();
    const std::string served = row.getColumn(0);
    if (served != canonical)
        throw std::runtime_error("the state belongs to the books in " + served + ", not to " +
                                 canonical + ": every device would delete its books. Serve " +
                                 served + " again, or name another file with --state");
}

}  // namespace

UploadFolder::UploadFolder(const fs::path& database) : temporary_(database.empty()) {
    if (!temporary_) {
        path_ = database.string() + ".uploads";
        fs::create_directory(path_);
        fs::permissions(path_, fs::perms::owner_all);
        return;
    }
    std::string name = fs::temp_directory_path() / "tavro-service-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), name);
    path_ = name;
}

UploadFolder::~UploadFolder() {
    std::error_code ignored;
    if (temporary_)
        fs::remove_all(path_, ignored);
}

Catalogue::Catalogue(SQLite::Database& database, fs::path folder, fs::path uploads,
                     std::function<void(const std::string&)> report)
    : database_(database),
      folder_(std::move(folder)),
      uploads_(std::move(uploads)),
      report_(std::move(report)) {
    claimFolder(database_, folder_);
    removeUnfinishedUploads();
}

void Catalogue::refresh(const ScanProgress& progress) {
    if (folder_.empty())
        return;
    const FolderContent content = FolderReader(folder_).content;
    for (const auto& [path, reason] : content.unread) {
        if (unread_.count(path) == 0)
            report_((path.empty() ? folder_ : folder_ / path).string() +
                    ": cannot be read, its books stay as they were: " + reason);
    }
    unread_ = content.unread;
    const auto known = knownItems();
    updateAll(content.files, known, progress);
    SQLite::Transaction transaction(database_);
    for (const auto& [path, item] : known) {
        // What was not read is no reason to take books off the devices.
        const bool deleted = content.lacks(path);
        if (deleted || content.files.count(path) > 0)
            markDeleted(item, deleted);
    }
    transaction.commit();
}

void Catalogue::updateAll(const std::set<std::string>& files,
                          const std::map<std::string, Known>& known, const ScanProgress& progress) {
    SQLite::Transaction transaction(database_);
    std::size_t done = 0;
    try {
        for (const std::string& path : files) {
            update(path, known);
            if (progress)
                progress(++done, files.size());
        }
    } catch (...) {
        transaction.commit();  // the next scan goes on from there
        throw;
    }
    transaction.commit();
}

void Catalogue::markDeleted(const Known& item, bool deleted) {
    if (deleted != item.deleted)
        query(database_, "UPDATE items SET deleted = ? WHERE id = ?", int(deleted), item.id).exec();
}

std::map<std::string, Catalogue::Known> Catalogue::knownItems() {
    std::map<std::string, Known> known;
    auto row = query(database_, "SELECT path, id, size, modified, deleted FROM items");
    while (row.executeStep())
        known[row.getColumn(0)] = {row.getColumn(1),
                                   {row.getColumn(2).getInt64(), row.getColumn(3).getInt64()},
                                   row.getColumn(4).getInt() != 0};
    return known;
}

void Catalogue::update(const std::string& path, const std::map<std::string, Known>& known) {
    std::error_code gone;
    const auto size = static_cast<std::int64_t>(fs::file_size(folder_ / path, gone));
    const auto modified = fs::last_write_time(folder_ / path, gone).time_since_epoch().count();
    const Stamp stamp(size, modified);
    const auto item = known.find(path);
    const auto failed = unreadable_.find(path);
    if (gone || (item != known.end() && item->second.stamp == stamp) ||
        (failed != unreadable_.end() && failed->second == stamp))
        return;
    try {
        const BookDetails details = readBook(folder_ / path);
        unreadable_.erase(path);
        store(path, item != known.end() ? item->second.id : newId(path), stamp, details);
    } catch (const BookError& error) {
        unreadable_[path] = stamp;
        report_((folder_ / path).string() + ": skipped: " + error.what());
    }
}

void Catalogue::store(const std::string& path, int id, Stamp stamp, const BookDetails& details) {
    const int hasCover = !details.cover.empty();
    query(database_,
          "INSERT INTO items (id, path, size, modified, title, artist, isbn, isbn13, file_type,"
          " has_cover) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT (id) DO UPDATE SET"
          " size = excluded.size, modified = excluded.modified, title = excluded.title,"
          " artist = excluded.artist, isbn = excluded.isbn, isbn13 = excluded.isbn13,"
          " has_cover = excluded.has_cover",
          id, path, stamp.first, stamp.second, details.title, details.artist, details.isbn,
          details.isbn13, bookFileType(path), hasCover)
        .exec();
}

int Catalogue::newId(const std::string& path) {
    std::uint32_t id = hashOf(path);
    for (;; ++id) {
        id &= static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
        if (id != 0 && !query(database_, "SELECT 1 FROM items WHERE id = ?", id).executeStep())
            return static_cast<int>(id);
    }
}

std::vector<Book> Catalogue::books() {
    std::vector<Book> books;
    auto row = query(database_, select_books + "ORDER BY path");
    while (!folder_.empty() && row.executeStep())
        books.push_back(bookOf(row));
    return books;
}

int Catalogue::count() {
    return folder_.empty()
               ? 0
               : database_.execAndGet("SELECT COUNT(*) FROM items WHERE deleted = 0").getInt();
}

std::optional<Book> Catalogue::find(int id) {
    auto row = query(database_, select_books + "WHERE id = ? AND deleted = 0", id);
    if (folder_.empty() || !row.executeStep())
        return std::nullopt;
    return bookOf(row);
}

Book Catalogue::bookOf(const SQLite::Statement& row) const {
    Book book;
    book.id = row.getColumn(0);
    book.path = row.getColumn(1).getString();
    book.title = row.getColumn(2).getString();
    book.artist = row.getColumn(3).getString();
    book.isbn = row.getColumn(4).getString();
    book.isbn13 = row.getColumn(5).getString();
    book.fileType = row.getColumn(6).getString();
    book.hasCover = row.getColumn(7).getInt() != 0;
    book.deleted = row.getColumn(8).getInt() != 0;
    const std::string upload = row.getColumn(9).getString();
    book.version = row.getColumn(11).getString() + "-" + row.getColumn(12).getString();
    book.original = folder_ / book.path;
    book.content = upload.empty() ? book.original : uploads_ / upload;
    book.fileName = row.getColumn(10).getString();
    if (book.fileName.empty())
        book.fileName = printable(book.original.filename());
    return book;
}

void Catalogue::replaceContent(int id, posix::TemporaryFile& upload, const std::string& fileName) {
    const std::string replaced = uploadOf(id);
    const std::string name = randomToken();
    upload.renameTo(uploads_ / name);
    std::error_code ignored;
    try {
        query(database_, "UPDATE items SET upload = ?, upload_name = ? WHERE id = ?", name,
              fileName, id)
            .exec();
    } catch (const std::exception&) {
        fs::remove(uploads_ / name, ignored);
        throw;
    }
    // Only now, with the new file and the entry for it on the disk.
    if (!replaced.empty())
        fs::remove(uploads_ / replaced, ignored);
}

std::string Catalogue::uploadOf(int id) {
    auto row = query(database_, "SELECT upload FROM items WHERE id = ?", id);
    return row.executeStep() ? row.getColumn(0).getString() : "";
}

// No others, for the state that refers to them may only have been mislaid.
void Catalogue::removeUnfinishedUploads() {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(uploads_)) {
        if (entry.path().filename().string().rfind(unfinished_upload, 0) == 0)
            fs::remove(entry.path(), ignored);
    }
}

}  // namespace tavro::service
