#include <cstdio>

#include "session/download_name.h"
#include "session/item_number.h"
#include "tavro.h"
#include "transport/partial_file.h"

std::string Tavro::downloadBook(const BookDescription& book) {
    if (!hasSession())
        return {};
    const std::string& itemId = book.field(BookDescription::ItemID);
    const std::string serverName = server->downloadContent(itemId, downloadFolderPath);
    if (serverName.empty())
        return {};
    std::string finalName = session::freeName(downloadFolderPath, serverName);
    // The map learns of the book first: a file in the folder is never without its item.
    bookMap.Add(finalName, session::itemNumber(itemId));
    std::rename(transport::partialFile(downloadFolderPath, serverName).c_str(),
                (downloadFolderPath + "/" + finalName).c_str());
    return finalName;
}
