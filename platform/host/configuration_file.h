#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A text file of `key=value` lines, held as the lines it consists of, so that whatever is not
/// changed is saved byte for byte: comments, order, spacing, line ends and lines of no meaning.
///
/// Blanks around key and value do not count. When a key stands in several lines, the last counts.
class ConfigurationFile {
public:
    /// Reads the file `path`; nothing when it cannot be read. A missing file in an existing folder
    /// reads as an empty one.
    static std::optional<ConfigurationFile> open(const std::string& path);

    /// Whether `key` can be written: no line break, and as the key of a line it reads back.
    static bool isKey(std::string_view key);

    /// Whether `value` can be written: no outer blanks, no line break.
    static bool isValue(std::string_view value);

    /// The text that stands behind `key`, without outer blanks; valid until the next change.
    std::optional<std::string_view> value(std::string_view key) const;

    /// Puts `value` behind `key`, in the line that counts or in a new last line. `isKey(key)` and
    /// `isValue(value)` must hold.
    void setValue(std::string_view key, std::string_view value);

    /// Removes all lines of `key`.
    void remove(std::string_view key);

    /// Writes the file atomically, or leaves it alone when it exists and nothing was changed.
    /// Throws `std::system_error`, with the old file as it was.
    void save();

private:
    /// `path` is absolute and names the file itself, not a link to it.
    explicit ConfigurationFile(std::string path) : path_(std::move(path)) {}

    bool load();
    std::size_t lineOf(std::string_view key) const;

    std::string path_;
    std::optional<std::string> saved_;  // what the file holds, if it exists
    std::vector<std::string> lines_;    // each with its line end
};
