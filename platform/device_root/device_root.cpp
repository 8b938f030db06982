#include "device_root/device_root.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

namespace device_root {

namespace {

constexpr char nowhere[] = "/nonexistent/tavro";

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

std::string homeFolder() {
    if (std::string home = environment("HOME"); !home.empty())
        return home;
    const passwd* const entry = ::getpwuid(::getuid());
    return entry == nullptr ? std::string() : entry->pw_dir;
}

Choice configuredChoice() {
    if (std::strcmp(configured, each_users_own) != 0)
        return {configured, "the build"};
    // A relative one means nothing: it would be another folder in each working folder.
    if (const std::string data = environment("XDG_DATA_HOME"); !data.empty() && data[0] == '/')
        return {data + "/tavro", "XDG_DATA_HOME"};
    return {homeFolder() + "/.local/share/tavro", "the home folder"};
}

std::string firstAccepted() {
    for (const Choice& choice : {firstChoice(), configuredChoice()})
        if (std::string path = accepted(choice.path); !path.empty())
            return path;
    return nowhere;
}

/// Whether the absolute path `path` leads back to "/" or above: "/a/..".
bool leadsBack(const std::string& path) {
    int depth = 0;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = path.find('/', begin);
        const std::string name = path.substr(begin, end - begin);
        if (name == "..")
            --depth;
        else if (!name.empty() && name != ".")
            ++depth;
        if (depth < 0)
            return true;
    }
    return depth == 0;
}

}  // namespace

bool isPlainWord(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char character) {
        return (character < 0x80 && std::isalnum(character) != 0) ||
               (character != 0 && std::strchr(plain_punctuation, character) != nullptr);
    });
}

std::string accepted(std::string path) {
    path.erase(path.find_last_not_of('/') + 1);
    if (path.empty() || path[0] != '/' || !isPlainWord(path) || leadsBack(path))
        return {};
    return path;
}

const std::string& root() {
    static const std::string chosen = is_fixed ? std::string() : firstAccepted();
    return chosen;
}

Choice firstChoice() {
    const std::string chosen = environment(variable);
    return chosen.empty() ? configuredChoice() : Choice{chosen, variable};
}

}  // namespace device_root
