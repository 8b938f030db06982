#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/VariadicBind.h>

#include <filesystem>
#include <string>

namespace tavro::service {

/// Opens the state file `path`, makes it if there is none, and keeps other processes out; an empty
/// path keeps the state in memory. Throws `std::runtime_error` that names the file. Not to be used
/// by two threads at once.
SQLite::Database openDatabase(const std::filesystem::path& path);

/// The statement `sql` with `values` bound to its placeholders in their order.
template <typename... Values>
SQLite::Statement query(SQLite::Database& database, const std::string& sql,
                        const Values&... values) {
    SQLite::Statement statement(database, sql);
    SQLite::bind(statement, values...);
    return statement;
}

}  // namespace tavro::service
