#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "session/download_name.h"
#include "tavro.h"

namespace {

/// The item id as the book map holds it: a decimal number, saturated to 32 bits as on the device;
/// 0 for a text without one.
int itemNumber(const std::string& itemId) {
    const long number = std::strtol(itemId.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

}  // namespace

std::string Tavro::downloadBook(const BookDescription& book) {
    if (!hasSession())
        return {};
    const std::string& itemId = book.field(BookDescription::ItemID);
    const std::string serverName = server->downloadContent(itemId, downloadFolderPath);
    if (serverName.empty())
        return {};
    std::string finalName = session::freeName(downloadFolderPath, serverName);
    // The map learns of the book first: a file in the folder is never without its item.
    bookMap.Add(finalName, itemNumber(itemId));
    const std::string folder = downloadFolderPath + "/";
    std::rename((folder + serverName + ".downloading").c_str(), (folder + finalName).c_str());
    return finalName;
}
