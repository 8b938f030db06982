#include "state/database.h"

#include <SQLiteCpp/Transaction.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <stdexcept>

#include "posix/file_descriptor.h"

namespace tavro::service {

namespace {

constexpr int schema_version = 2;

/// What brings a state file of each version, the first of which is an empty one, to the next.
constexpr const char* upgrades[schema_version] = {
    "CREATE TABLE devices (token TEXT PRIMARY KEY, device_id TEXT NOT NULL,"
    " device_type TEXT NOT NULL);"
    "CREATE TABLE accounts (id INTEGER PRIMARY KEY, email TEXT NOT NULL UNIQUE COLLATE NOCASE,"
    " first_name TEXT NOT NULL, last_name TEXT NOT NULL, password TEXT NOT NULL);"
    "CREATE TABLE sessions (id TEXT PRIMARY KEY, token TEXT NOT NULL REFERENCES devices,"
    " account INTEGER NOT NULL REFERENCES accounts);"
    "CREATE TABLE items (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE,"
    " size INTEGER NOT NULL, modified INTEGER NOT NULL, title TEXT NOT NULL,"
    " artist TEXT NOT NULL, isbn TEXT NOT NULL, isbn13 TEXT NOT NULL, file_type TEXT NOT NULL,"
    " has_cover INTEGER NOT NULL, deleted INTEGER NOT NULL DEFAULT 0,"
    " upload TEXT NOT NULL DEFAULT '', upload_name TEXT NOT NULL DEFAULT '');",
    "CREATE TABLE settings (name TEXT PRIMARY KEY, value TEXT NOT NULL);"};

/// Makes the state file `path`, if there is none, and takes it from other users of the machine. The
/// files that SQLite puts beside it get its mode.
void keepPrivate(const std::string& path) {
    const posix::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ::fchmod(file.get(), 0600);
    for (const char* const beside : {"-wal", "-shm"})
        ::chmod((path + beside).c_str(), 0600);
}

void prepare(SQLite::Database& database) {
    if (sqlite3_db_readonly(database.getHandle(), "main") == 1)
        throw SQLite::Exception("the file is not writable");
    database.exec("PRAGMA locking_mode=EXCLUSIVE");
    database.exec("PRAGMA journal_mode=WAL");
    database.exec("PRAGMA wal_autocheckpoint=32");
    database.exec("PRAGMA synchronous=FULL");
    database.exec("PRAGMA foreign_keys=ON");
    SQLite::Transaction transaction(database);
    const int version = database.execAndGet("PRAGMA user_version");
    if (version > schema_version)
        throw SQLite::Exception("written by a newer version of tavro-service");
    for (int next = version; next < schema_version; ++next)
        database.exec(upgrades[next]);
    database.exec("PRAGMA user_version=" + std::to_string(schema_version));
    transaction.commit();
}

}  // namespace

SQLite::Database openDatabase(const std::filesystem::path& path) {
    const std::string name = path.empty() ? ":memory:" : path.string();
    try {
        if (!path.empty())
            keepPrivate(name);
        SQLite::Database database(name, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        prepare(database);
        return database;
    } catch (const SQLite::Exception& error) {
        const bool used = error.getErrorCode() == SQLITE_BUSY;
        throw std::runtime_error(
            "state file " + name + ": " +
            (used ? "another process, perhaps another tavro-service, uses it" : error.what()));
    }
}

}  // namespace tavro::service
