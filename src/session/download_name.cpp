#include "session/download_name.h"

#include <string_view>

#include "posix/file_status.h"

namespace session {

namespace {

/// The double extension of zipped FB2 books, numbered before the first of its two dots.
constexpr std::string_view zipped_fb2 = ".fb2.zip";

bool endsWith(const std::string& text, std::string_view end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// Where the extension of `name` begins; its end when it has none.
std::size_t extensionPosition(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0)
        return name.size();
    if (name.find('/', dot) != std::string::npos)
        return name.size();
    if (name.size() > zipped_fb2.size() && endsWith(name, zipped_fb2))
        return name.size() - zipped_fb2.size();
    return dot;
}

}  // namespace

std::string freeName(const std::string& folder, const std::string& serverName) {
    // The system's calls end a name at a zero byte: a number behind it would never make it another.
    const std::string name = serverName.substr(0, serverName.find('\0'));
    const std::size_t position = extensionPosition(name);
    const std::string base = name.substr(0, position);
    const std::string extension = name.substr(position);
    std::string candidate = name;
    for (unsigned number = 1; posix::statusOf((folder + "/" + candidate).c_str()); ++number)
        candidate = base + "_" + std::to_string(number) + extension;
    return candidate;
}

}  // namespace session
