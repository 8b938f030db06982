#include "state/database.h"

#include <stdexcept>

namespace tavro::service {

namespace {

constexpr std::int64_t schema_version = 1;

constexpr const char* schema[] = {
    "CREATE TABLE devices (token TEXT PRIMARY KEY, device_id TEXT NOT NULL,"
    " device_type TEXT NOT NULL)",
    "CREATE TABLE accounts (id INTEGER PRIMARY KEY, email TEXT NOT NULL UNIQUE COLLATE NOCASE,"
    " first_name TEXT NOT NULL, last_name TEXT NOT NULL, password TEXT NOT NULL)",
    "CREATE TABLE sessions (id TEXT PRIMARY KEY, token TEXT NOT NULL REFERENCES devices,"
    " account INTEGER NOT NULL REFERENCES accounts)",
    "CREATE TABLE items (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE,"
    " size INTEGER NOT NULL, modified INTEGER NOT NULL, title TEXT NOT NULL,"
    " artist TEXT NOT NULL, isbn TEXT NOT NULL, isbn13 TEXT NOT NULL, file_type TEXT NOT NULL,"
    " has_cover INTEGER NOT NULL, deleted INTEGER NOT NULL DEFAULT 0,"
    " upload TEXT NOT NULL DEFAULT '', upload_name TEXT NOT NULL DEFAULT '')"};

[[noreturn]] void fail(sqlite3* database) {
    if (sqlite3_errcode(database) == SQLITE_BUSY)
        throw std::runtime_error("another process, perhaps another tavro-service, uses it");
    throw std::runtime_error(sqlite3_errmsg(database));
}

void check(int code, sqlite3* database) {
    if (code != SQLITE_OK)
        fail(database);
}

}  // namespace

Statement::Statement(sqlite3* database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr), database);
    statement_.reset(statement);
}

bool Statement::nextRow() {
    const int code = sqlite3_step(statement_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        fail(sqlite3_db_handle(statement_.get()));
    return code == SQLITE_ROW;
}

std::string Statement::text(int column) const {
    const auto* const bytes = sqlite3_column_text(statement_.get(), column);
    const int size = sqlite3_column_bytes(statement_.get(), column);
    return bytes ? std::string(bytes, bytes + size) : "";
}

std::int64_t Statement::number(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

void Statement::bindOne(int place, const std::string& value) {
    check(sqlite3_bind_text64(statement_.get(), place, value.data(), value.size(), SQLITE_TRANSIENT,
                              SQLITE_UTF8),
          sqlite3_db_handle(statement_.get()));
}

void Statement::bindOne(int place, std::int64_t value) {
    check(sqlite3_bind_int64(statement_.get(), place, value), sqlite3_db_handle(statement_.get()));
}

Database::Database(const std::filesystem::path& path) {
    const std::string name = path.empty() ? ":memory:" : path.string();
    sqlite3* database = nullptr;
    const int code = sqlite3_open(name.c_str(), &database);
    database_.reset(database);
    try {
        check(code, database);
        if (sqlite3_db_readonly(database, "main") == 1)
            throw std::runtime_error("the file is not writable");
        prepare();
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("state file " + name + ": " + error.what());
    }
}

void Database::prepare() {
    run("PRAGMA locking_mode=EXCLUSIVE");
    run("PRAGMA journal_mode=WAL");
    run("PRAGMA foreign_keys=ON");
    Transaction transaction(*this);
    Statement statement = query("PRAGMA user_version");
    statement.nextRow();
    const std::int64_t version = statement.number(0);
    statement.nextRow();
    if (version > schema_version)
        throw std::runtime_error("written by a newer version of tavro-service");
    if (version == 0) {
        for (const char* const table : schema)
            run(table);
        run("PRAGMA user_version=1");
    }
    transaction.commit();
}

Transaction::~Transaction() {
    try {
        if (open_)
            database_.run("ROLLBACK");
    } catch (const std::exception&) {
        // A failed statement may have ended the transaction already.
    }
}

void Transaction::commit() {
    database_.run("COMMIT");
    open_ = false;
}

}  // namespace tavro::service
