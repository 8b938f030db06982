#include "tavro-sync/placeholders.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <vector>

#include "account/files.h"
#include "client/placeholder.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// Whether the file `path` is named like a placeholder and is one, or was interrupted on its way.
bool isPlaceholder(const fs::path& path) {
    const std::string item = path.stem();
    if (!fs::is_regular_file(fs::symlink_status(path)))
        return false;
    if (path.extension() != placeholder::extension ||
        item.find_first_not_of("-0123456789") != std::string::npos)
        return false;
    const std::string word = placeholder::itemIn(path).value_or("unreadable");
    return word.empty() || word == item;
}

void write(const std::string& path, int item) {
    errno = 0;
    std::ofstream stream(path, std::ios::trunc);
    if (!(stream << item << '\n').flush())
        throwCannotWrite(path);
}

}  // namespace

std::string Placeholders::path(int item) const {
    return folder_ + "/" + std::to_string(item) + placeholder::extension;
}

void Placeholders::replace(const std::set<int>& items) const {
    std::set<std::string> wanted;
    for (const int item : items)
        wanted.insert(path(item));
    std::vector<fs::path> superfluous;
    for (const auto& entry : fs::directory_iterator(folder_))
        if (wanted.count(entry.path()) == 0 && isPlaceholder(entry.path()))
            superfluous.push_back(entry.path());
    for (const auto& file : superfluous)
        fs::remove(file);
    for (const int item : items)
        if (!fs::exists(path(item)) ||
            (isPlaceholder(path(item)) && placeholder::itemIn(path(item)) == ""))
            write(path(item), item);
}

void Placeholders::remove(int item) const {
    std::error_code ignored;  // the next round tries again
    if (isPlaceholder(path(item)))
        fs::remove(path(item), ignored);
}

}  // namespace tavro::tools
