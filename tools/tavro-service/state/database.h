#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace tavro::service {

/// One prepared SQL statement; values are bound, never pasted into its text.
class Statement {
public:
    /// Prepares `sql`. Throws `std::runtime_error`.
    Statement(sqlite3* database, const std::string& sql);

    /// Binds `values` to the placeholders in their order.
    template <typename... Values>
    Statement& bind(const Values&... values) {
        int place = 0;
        (bindOne(++place, values), ...);
        return *this;
    }

    /// Goes to the next row; false after the last. Throws `std::runtime_error`.
    bool nextRow();

    /// Text of a column of the row, counted from 0.
    std::string text(int column) const;

    /// Number in a column of the row, counted from 0.
    std::int64_t number(int column) const;

private:
    void bindOne(int place, const std::string& value);
    void bindOne(int place, std::int64_t value);

    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

/// The service's state in SQLite. Not to be used by two threads at once.
class Database {
public:
    /// Opens the state file `path`, makes it if there is none, and keeps other processes out; an
    /// empty path keeps the state in memory. Throws `std::runtime_error` that names the file.
    explicit Database(const std::filesystem::path& path);

    /// Prepares `sql` with `values` bound.
    template <typename... Values>
    Statement query(const std::string& sql, const Values&... values) {
        Statement statement(database_.get(), sql);
        statement.bind(values...);
        return statement;
    }

    /// Runs `sql` with `values` bound to its end.
    template <typename... Values>
    void run(const std::string& sql, const Values&... values) {
        Statement statement = query(sql, values...);
        while (statement.nextRow()) {
        }
    }

private:
    void prepare();

    struct Close {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
    };
    std::unique_ptr<sqlite3, Close> database_;
};

/// Makes the changes of its lifetime one; they are undone unless `commit` was called.
class Transaction {
public:
    explicit Transaction(Database& database) : database_(database) { database_.run("BEGIN"); }
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Keeps the changes. Throws `std::runtime_error`.
    void commit();

private:
    Database& database_;
    bool open_ = true;
};

}  // namespace tavro::service
