#include "configuration_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <numeric>

#include "file_access.h"
#include "posix/atomic_file.h"

namespace {

struct Entry {
    std::string_view key;
    std::string_view value;
};

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return text.substr(0, 0);
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Key and value as parts of `line`, or nothing when it is a comment or no entry.
std::optional<Entry> entryIn(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos)
        return std::nullopt;
    const Entry entry{trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1))};
    if (entry.key.empty() || entry.key.front() == '#')
        return std::nullopt;
    return entry;
}

bool isEntryOf(std::string_view line, std::string_view key) {
    const std::optional<Entry> entry = entryIn(line);
    return entry && entry->key == key;
}

/// What an existing file `path` is called when no link is on the way; empty, with `errno` set, when
/// there is none.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> name(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    return name ? name.get() : "";
}

/// The same for a file that may still be missing in an existing folder.
std::string withoutLinks(const std::string& path) {
    std::string name = resolved(path);
    if (!name.empty() || errno != ENOENT)
        return name;
    const std::size_t nameStart = path.rfind('/') + 1;  // 0 without a folder
    const std::string folder = resolved(nameStart == 0 ? "." : path.substr(0, nameStart));
    return folder.empty() || nameStart == path.size() ? "" : folder + "/" + path.substr(nameStart);
}

bool endsWith(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

std::vector<std::string> splitLines(std::string_view content) {
    std::vector<std::string> lines;
    while (!content.empty()) {
        const std::size_t newline = std::min(content.find('\n'), content.size() - 1);
        lines.emplace_back(content.substr(0, newline + 1));
        content.remove_prefix(newline + 1);
    }
    return lines;
}

}  // namespace

std::optional<ConfigurationFile> ConfigurationFile::open(const std::string& path) {
    ConfigurationFile file(withoutLinks(path));
    if (file.path_.empty() || !file.load())
        return std::nullopt;
    return file;
}

bool ConfigurationFile::load() {
    const posix::FileDescriptor file = openRegularFile(path_.c_str());
    if (!file)
        return errno == ENOENT;
    saved_ = readAll(file);
    lines_ = splitLines(saved_.value_or(""));
    return saved_.has_value();
}

bool ConfigurationFile::isKey(std::string_view key) {
    return isValue(key) && isEntryOf(std::string(key) + "=", key);
}

bool ConfigurationFile::isValue(std::string_view value) {
    return trimmed(value) == value && value.find_first_of("\r\n") == std::string_view::npos;
}

/// Index of the line that counts for `key`, or the number of lines when there is none.
std::size_t ConfigurationFile::lineOf(std::string_view key) const {
    for (std::size_t index = lines_.size(); index > 0; --index) {
        if (isEntryOf(lines_[index - 1], key))
            return index - 1;
    }
    return lines_.size();
}

std::optional<std::string_view> ConfigurationFile::value(std::string_view key) const {
    const std::size_t index = lineOf(key);
    return index < lines_.size() ? std::optional(entryIn(lines_[index])->value) : std::nullopt;
}

void ConfigurationFile::setValue(std::string_view key, std::string_view value) {
    const std::size_t index = lineOf(key);
    if (index < lines_.size()) {
        std::string& line = lines_[index];
        const std::string_view old = entryIn(line)->value;
        line.replace(static_cast<std::size_t>(old.data() - line.data()), old.size(), value);
        return;
    }
    // A new line ends as the first one does.
    const char* const lineEnd = !lines_.empty() && endsWith(lines_.front(), "\r\n") ? "\r\n" : "\n";
    if (!lines_.empty() && !endsWith(lines_.back(), "\n"))
        lines_.back() += lineEnd;
    lines_.push_back(std::string(key).append("=").append(value) + lineEnd);
}

void ConfigurationFile::remove(std::string_view key) {
    lines_.erase(std::remove_if(lines_.begin(), lines_.end(),
                                [key](const auto& line) { return isEntryOf(line, key); }),
                 lines_.end());
}

void ConfigurationFile::save() {
    const std::string content = std::accumulate(lines_.begin(), lines_.end(), std::string());
    if (saved_ == content)
        return;
    posix::replaceFile(path_, content, posix::modeOf(path_, 0600));
    saved_ = content;
}
