#include "tavro-sync/download_list.h"

#include <core_utils_host.h>
#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <sstream>
#include <thread>

#include "account/files.h"
#include "posix/file_descriptor.h"

namespace tavro::tools {

namespace {

/// Waits, though not for ever, until nobody reads the open list.
void lockList(const posix::FileDescriptor& list) {
    constexpr int attempts = 30;
    constexpr std::chrono::milliseconds pause(100);
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (::flock(list.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
            return;
        std::this_thread::sleep_for(pause);
    }
}

}  // namespace

void writeDownloadList(const std::string& path, const std::vector<std::string>& files) {
    const posix::FileDescriptor list(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!list)
        throwCannotWrite(path, errno);
    lockList(list);
    std::ostringstream serialised;
    folium::utilities::SerializeStringVec(serialised, files);
    replaceFile(path, serialised.str());
}

}  // namespace tavro::tools
