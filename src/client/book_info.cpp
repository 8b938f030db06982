#include <time.h>

#include <cstddef>
#include <cstring>
#include <map>
#include <string>

#include "client/browser_file.h"
#include "platform/device_paths.h"
#include "tavro.h"
#include "tavro_entry_points.h"

// The browser's record as it lies in memory, on the device and on a desktop.
constexpr std::size_t slot = sizeof(void*);
static_assert(offsetof(tavro_book_info, title) == 4 * slot);
static_assert(offsetof(tavro_book_info, author) == 5 * slot);
static_assert(offsetof(tavro_book_info, category_id) == 8 * slot);
static_assert(offsetof(tavro_book_info, isbn) == 22 * slot);

namespace {

/// Seconds that each stage of the last call took, for a look from a debugger.
std::map<std::string, double> stageSeconds;

/// Whether the session of this process was initialised, successfully or not.
bool sessionInitialised = false;

/// Monotonic clock, in seconds.
double now() {
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Adds the time since the last stage, or since its construction, to the table.
class StageTimer {
public:
    StageTimer() : start_(now()) { stageSeconds.clear(); }

    void add(const char* stage) {
        const double end = now();
        stageSeconds[stage] += end - start_;
        start_ = end;
    }

private:
    double start_;
};

/// The session of this process. Its one attempt to initialise is made at the first call.
Tavro& processSession() {
    static Tavro session;
    if (!sessionInitialised) {
        session.init(device_paths::configurationFolder());
        sessionInitialised = true;
    }
    return session;
}

char* copyOf(const BookDescription& book, BookDescription::Field field) {
    return ::strdup(book.field(field).c_str());
}

}  // namespace

int tavro_get_book_info(const char* path, tavro_book_info* info) {
    StageTimer timer;
    if (path == nullptr || info == nullptr || !browser_file::isInSyncFolder(path))
        return -1;
    Tavro& session = processSession();
    timer.add("init");
    const std::vector<BookDescription>& books = session.getAddedBooks();
    timer.add("getAddedBooks");
    const std::string key = browser_file::itemKey(path, session);
    timer.add("book");
    const BookDescription* const book = key.empty() ? nullptr : browser_file::findBook(books, key);
    timer.add("BookDescription");
    if (book == nullptr)
        return -1;
    info->title = copyOf(*book, BookDescription::Title);
    info->author = copyOf(*book, BookDescription::Artist);
    info->category_id = copyOf(*book, BookDescription::CategoryId);
    info->isbn = copyOf(*book, BookDescription::ISBN);
    return 0;
}
