#include "tavro-sync/placeholders.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>

#include "account/files.h"
#include "client/placeholder.h"
#include "posix/file_descriptor.h"
#include "posix/write_all.h"
#include "program/failure.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// The item of which a file called `name` would be the placeholder; empty when of none.
std::string itemNamedBy(const std::string& name) {
    constexpr std::string_view extension = placeholder::extension;
    const std::size_t end = name.size() - std::min(name.size(), extension.size());
    const bool named = name.compare(end, extension.size(), extension) == 0 &&
                       name.find_first_not_of("-0123456789") == end;
    return named ? name.substr(0, end) : "";
}

/// Whether the file `path` is named like a placeholder and is one, or was interrupted on its way.
bool isPlaceholder(const std::string& path) {
    const std::string item = itemNamedBy(path.substr(path.rfind('/') + 1));
    std::error_code unknown;
    if (item.empty() || !fs::is_regular_file(fs::symlink_status(path, unknown)))
        return false;
    const std::string word = placeholder::itemIn(path).value_or("unreadable");
    return word.empty() || word == item;
}

void write(const std::string& path, int item) {
    const posix::FileDescriptor file(::open(
        path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
    if (!file || !posix::writeAll(file.get(), std::to_string(item) + "\n"))
        throwCannotWrite(path, errno);
}

/// Does `action`, and notes in `problems` what it throws: no file may keep the others waiting.
template <typename Action>
void attempt(std::vector<std::string>& problems, Action action) {
    try {
        action();
    } catch (const Failure& failure) {
        problems.emplace_back(failure.what());
    }
}

}  // namespace

std::string Placeholders::path(int item) const {
    return folder_ + "/" + std::to_string(item) + placeholder::extension;
}

std::vector<std::string> Placeholders::replace(const std::set<int>& items) const {
    std::set<std::string> wanted;
    for (const int item : items)
        wanted.insert(path(item));
    std::vector<std::string> problems;
    for (const std::string& name : namesIn(folder_)) {
        const std::string file = folder_ + "/" + name;
        if (wanted.count(file) == 0 && isPlaceholder(file))
            attempt(problems, [&] { removeFile(file); });
    }
    for (const int item : items)
        attempt(problems, [&] {
            if (!exists(path(item)) ||
                (isPlaceholder(path(item)) && placeholder::itemIn(path(item)) == ""))
                write(path(item), item);
        });
    return problems;
}

void Placeholders::remove(int item) const {
    std::error_code ignored;  // the next round tries again
    if (isPlaceholder(path(item)))
        fs::remove(path(item), ignored);
}

}  // namespace tavro::tools
