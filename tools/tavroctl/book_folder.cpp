#include "tavroctl/book_folder.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "account/book_map.h"
#include "account/files.h"
#include "client/placeholder.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// `path` without symbolic links, as far as it exists, and without a trailing "/".
fs::path resolved(const fs::path& path) {
    std::error_code unknown;
    fs::path whole = fs::weakly_canonical(path, unknown);
    if (unknown)
        whole = path.lexically_normal();
    return whole.has_filename() ? whole : whole.parent_path();
}

/// Whether `folder` is `inner` or one of the folders on the way to it.
bool leadsTo(const std::string& folder, fs::path inner) {
    while (!isSameFolder(folder, inner)) {
        if (!inner.has_relative_path())
            return false;
        inner = inner.parent_path();
    }
    return true;
}

/// The home folders of whoever runs the program: that of the environment, that of the system.
std::vector<std::string> homeFolders() {
    std::vector<std::string> folders;
    if (const char* const home = std::getenv("HOME"); home != nullptr && home[0] == '/')
        folders.emplace_back(home);
    if (const passwd* const entry = ::getpwuid(::getuid()); entry != nullptr)
        folders.emplace_back(entry->pw_dir);
    return folders;
}

bool isPlaceholderName(const fs::path& name) {
    const std::string item = name.stem();
    return name.extension() == placeholder::extension &&
           item.find_first_not_of("-0123456789") == std::string::npos;
}

bool staysAtLogOut(const fs::path& path) {
    std::error_code unknown;
    return path.filename().string()[0] == '.' ||
           fs::symlink_status(path, unknown).type() == fs::file_type::directory;
}

}  // namespace

std::string whyHarmful(const Account& account, const std::string& folder) {
    for (const std::string& home : homeFolders())
        if (isSameFolder(folder, home))
            return "it is a home folder";
    if (leadsTo(folder, account.folder()) || leadsTo(folder, resolved(account.folder())))
        return "it is or holds the configuration folder " + account.folder();
    return {};
}

std::vector<std::string> removedAtLogOut(const std::string& folder) {
    std::vector<std::string> names = namesIn(folder);
    const auto stays = [&](const std::string& name) { return staysAtLogOut(folder + "/" + name); };
    names.erase(std::remove_if(names.begin(), names.end(), stays), names.end());
    return names;
}

std::vector<std::string> foreignFiles(const Account& account, const std::string& folder) {
    const MappedFiles map = mappedFiles(account);
    std::vector<std::string> names = removedAtLogOut(folder);
    const auto isBook = [&](const std::string& name) {
        return map.count(name) > 0 || isPlaceholderName(name);
    };
    names.erase(std::remove_if(names.begin(), names.end(), isBook), names.end());
    return names;
}

bool isSameFolder(const std::string& left, const std::string& right) {
    std::error_code missing;
    return resolved(left) == resolved(right) || fs::equivalent(left, right, missing);
}

}  // namespace tavro::tools
