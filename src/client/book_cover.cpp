#include <lectern.h>

#include <string>

#include "client/browser_file.h"
#include "client/cover_extensions.h"
#include "platform/device_paths.h"
#include "posix/file_status.h"
#include "tavro.h"
#include "tavro_entry_points.h"

namespace {

/// Loads the first cover file that lies at `path` with one of the extensions, readable or not.
LecternBitmap* loadCover(const std::string& path, int width, int height) {
    constexpr int brightness = 96;
    constexpr int contrast = 105;
    constexpr int proportional = 1;
    constexpr int dither = 1;
    if (const std::string file = path + cover_extension::jpeg; posix::exists(file))
        return LoadJPEG(file.c_str(), width, height, brightness, contrast, proportional);
    if (const std::string file = path + cover_extension::png; posix::exists(file))
        return LoadPNGStretch(file.c_str(), width, height, proportional, dither);
    if (const std::string file = path + cover_extension::bmp; posix::exists(file))
        return LoadBitmap(file.c_str());
    return nullptr;
}

}  // namespace

void* tavro_get_book_cover(const char* path, int width, int height) {
    if (path == nullptr || !browser_file::isInSyncFolder(path))
        return nullptr;
    Tavro session;
    session.init(device_paths::configurationFolder());
    const std::vector<BookDescription>& books = session.getAddedBooks();
    const BookDescription* const book =
        browser_file::findBook(books, browser_file::itemKey(path, session));
    if (book == nullptr)
        return nullptr;
    const std::string& itemId = book->field(BookDescription::ItemID);
    return loadCover(std::string(device_paths::coverFolder()) + "/" + itemId, width, height);
}
