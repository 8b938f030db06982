#include "state/catalogue.h"

#include <SQLiteCpp/Transaction.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <system_error>

#include "state/secrets.h"

namespace fs = std::filesystem;

namespace tavro::service {

namespace {

/// What `bookOf` reads, in its order.
const std::string select_books =
    "SELECT id, path, title, artist, isbn, isbn13, file_type, has_cover, deleted, upload,"
    " upload_name FROM items ";

/// Paths of the books below `folder`, relative to it and sorted; hidden ones are passed over.
/// Throws `fs::filesystem_error` if the folder cannot be walked.
std::set<std::string> bookFiles(const fs::path& folder) {
    std::set<std::string> files;
    auto entry =
        fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied);
    for (; entry != fs::recursive_directory_iterator(); ++entry) {
        const std::string name = entry->path().filename();
        std::error_code ignored;
        if (name.front() == '.')
            entry.disable_recursion_pending();
        else if (!bookFileType(name).empty() && entry->is_regular_file(ignored))
            files.insert(entry->path().lexically_relative(folder));
    }
    return files;
}

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

}  // namespace

UploadFolder::UploadFolder(const fs::path& database) : temporary_(database.empty()) {
    if (!temporary_) {
        path_ = database.string() + ".uploads";
        fs::create_directory(path_);
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
    removeUnreferencedUploads();
    refresh();
}

void Catalogue::refresh() {
    if (folder_.empty())
        return;
    try {
        compareWith(bookFiles(folder_));
    } catch (const fs::filesystem_error& error) {
        // A folder that cannot be walked is no reason to take books off the devices.
        report_(std::string("the folder of the books cannot be read: ") + error.what());
    }
}

void Catalogue::compareWith(const std::set<std::string>& files) {
    const auto known = knownItems();
    SQLite::Transaction transaction(database_);
    for (const std::string& path : files)
        update(path, known);
    for (const auto& [path, item] : known) {
        const int deleted = files.count(path) == 0;
        if (deleted != item.deleted)
            query(database_, "UPDATE items SET deleted = ? WHERE id = ?", deleted, item.id).exec();
    }
    transaction.commit();
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
    book.original = folder_ / book.path;
    book.content = upload.empty() ? book.original : uploads_ / upload;
    book.fileName = row.getColumn(10).getString();
    if (book.fileName.empty())
        book.fileName = printable(book.original.filename());
    return book;
}

void Catalogue::replaceContent(int id, posix::TemporaryFile& upload, const std::string& fileName) {
    auto row = query(database_, "SELECT upload FROM items WHERE id = ?", id);
    const std::string replaced = row.executeStep() ? row.getColumn(0).getString() : "";
    const std::string name = randomToken();
    upload.renameTo(uploads_ / name);
    query(database_, "UPDATE items SET upload = ?, upload_name = ? WHERE id = ?", name, fileName,
          id)
        .exec();
    std::error_code ignored;
    if (!replaced.empty())
        fs::remove(uploads_ / replaced, ignored);
}

void Catalogue::removeUnreferencedUploads() {
    std::set<std::string> used;
    auto row = query(database_, "SELECT upload FROM items WHERE upload <> ''");
    while (row.executeStep())
        used.insert(row.getColumn(0));
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(uploads_)) {
        if (used.count(entry.path().filename()) == 0)
            fs::remove(entry.path(), ignored);
    }
}

}  // namespace tavro::service
