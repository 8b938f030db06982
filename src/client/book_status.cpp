#include <core_utils.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "client/placeholder.h"
#include "platform/device_paths.h"
#include "platform/log.h"
#include "tavro_entry_points.h"

namespace {

constexpr int no_placeholder = 0;
constexpr int not_pending = 1;
constexpr int pending = 2;

/// The files still to be downloaded; none when the list is empty or cannot be read.
std::vector<std::string> filesToDownload() {
    std::vector<std::string> files;
    std::ifstream stream(device_paths::downloadList());
    char first = 0;
    if (stream.get(first)) {
        stream.unget();
        folium::utilities::SerializationUtils::DeserializeStringVec(stream, files);
    }
    return files;
}

}  // namespace

int tavro_get_book_status(const char* path) {
    if (path == nullptr || std::strstr(path, placeholder::extension) == nullptr)
        return no_placeholder;
    const int list = ::open(device_paths::downloadList(), O_RDWR | O_CREAT, 0777);
    if (list == -1) {
        fl_print_log2(platform::log_error, __FILE__, __LINE__,
                      "int tavro_get_book_status(const char *)",
                      "[pid:%d]Failed to open lock file with errno [%d]", g_process_pid, errno);
        return not_pending;
    }
    ::flock(list, LOCK_SH);
    const std::vector<std::string> files = filesToDownload();
    if (std::count(files.begin(), files.end(), path) == 0) {
        ::flock(list, LOCK_UN);
        ::close(list);
        return not_pending;
    }
    // The descriptor stays open: the list keeps its lock while the browser shows a pending book.
    return pending;
}
