#include "client/browser_file.h"

#include <cstring>

#include "client/desc_comp.h"
#include "client/placeholder.h"
#include "tavro_client.h"

namespace browser_file {

namespace {

/// The part of `text` behind its last `separator`; `whole` decides what a text without one gives.
std::string behindLast(const std::string& text, char separator, bool whole) {
    const std::size_t position = text.rfind(separator);
    if (position == std::string::npos)
        return whole ? text : std::string();
    return text.substr(position + 1);
}

}  // namespace

bool isInSyncFolder(const char* path) {
    const std::string folder = TavroClient().GetSyncFolder();
    return std::strncmp(path, folder.c_str(), folder.size()) == 0;
}

std::string itemKey(const std::string& path, Tavro& session) {
    if (behindLast(path, '.', false) == placeholder::extension + 1)
        return placeholder::itemIn(path).value_or("");
    const std::map<std::string, int> books = session.GetBooks();
    const auto book = books.find(behindLast(path, '/', true));
    return book == books.end() ? std::string() : std::to_string(book->second);
}

const BookDescription* findBook(const std::vector<BookDescription>& books, const std::string& key) {
    const DescComp hasKey(key);
    for (const BookDescription& book : books)
        if (hasKey(book))
            return &book;
    return nullptr;
}

}  // namespace browser_file
