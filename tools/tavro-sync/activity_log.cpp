#include "tavro-sync/activity_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>

#include "console/output.h"
#include "posix/write_all.h"
#include "program/local_time.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

constexpr std::uintmax_t large = std::uintmax_t(1) << 20;

int openLog(const std::string& path) {
    std::error_code missing;
    if (const auto size = fs::file_size(path, missing); !missing && size > large)
        fs::rename(path, path + ".old", missing);
    return ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
}

}  // namespace

ActivityLog::ActivityLog(const std::string& path) : file_(openLog(path)) {}

void ActivityLog::note(const std::string& text) const {
    if (file_)
        posix::writeAll(file_.get(), localTime("%Y-%m-%d %H:%M:%S") + " [" +
                                         std::to_string(::getpid()) + "] " + displayable(text) +
                                         "\n");
}

}  // namespace tavro::tools
