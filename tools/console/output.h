#pragma once

#include <exception>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "console/screen_text.h"
#include "console/table.h"
#include "posix/file_descriptor.h"

namespace tavro::tools {

/// JSON whose members stay in the order given.
using Json = nlohmann::ordered_json;

/// What a terminal has room for.
struct Window {
    unsigned columns;
    unsigned rows;  ///< 0 when it does not tell
};

/// A result of many alike: an object of each for a script, and a row of each for a person.
struct Listing {
    Listing(std::initializer_list<std::string> headings) : table{headings, {}} {}

    void add(Json object, std::vector<std::string> row) {
        json.push_back(std::move(object));
        table.rows.push_back(std::move(row));
    }

    Json json = Json::array();
    Table table;
};

/// The program's own results and diagnostics. It writes to what standard output and standard error
/// were when it was made, whatever happens to these descriptors later. Writes may come from any
/// thread.
class Output {
public:
    /// Errors begin with the name `program`. With `json`, results are JSON documents and errors
    /// JSON lines.
    Output(std::string program, bool json);

    /// Prints a result: `json` or, for a person, `text` with a line end. Throws Failure when
    /// standard output takes it not.
    void result(const Json& json, const std::string& text) const;

    /// Prints a result: `json` or `table`, cut to the width of a terminal, with the line `end`, if
    /// any, behind it; or `empty` when the table has no rows.
    void result(const Json& json, const Table& table, const std::string& empty,
                const std::string& end = {}) const;

    /// Prints `listing`, or for a person `empty` when there is nothing in it.
    void list(const Listing& listing, const std::string& empty) const {
        result(listing.json, listing.table, empty);
    }

    /// Prints a result that is a JSON object of plain values: for a person, a line for each
    /// member that is not empty, whole on a terminal, too.
    void summary(const Json& json) const;

    /// Tells on standard error why the command failed; of a Failure all that it says.
    void error(const std::exception& error) const;

    /// Prints `text` on standard error as it is.
    void prompt(const std::string& text) const;

    /// Shows `text` and `end` on a line of the terminal that the next text replaces; empty clears
    /// it. Where they are too long for one line, `text` is shortened. Nothing when standard error
    /// is no terminal.
    void transient(const std::string& text, const std::string& end = {}) const;

    /// Whether results and errors are JSON.
    bool isJson() const { return json_; }

    /// Whether `transient` shows anything.
    bool hasTerminal() const;

    /// The window of the terminal on standard output; none when it is no terminal.
    std::optional<Window> window() const;

    int standardOutput() const { return output_.get(); }
    int standardError() const { return error_.get(); }

private:
    std::string program_;
    posix::FileDescriptor output_;
    posix::FileDescriptor error_;
    bool json_;
};

}  // namespace tavro::tools
