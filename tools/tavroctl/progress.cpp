#include "tavroctl/progress.h"

#include <chrono>
#include <cstdint>
#include <cstdio>

#include "transport/partial_file.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

constexpr auto interval = std::chrono::milliseconds(200);

/// `bytes` in the unit that suits them, as "1.5 MB".
std::string inUnits(double bytes) {
    char text[32];
    const bool large = bytes >= 1e6;
    std::snprintf(text, sizeof text, "%.*f %s", large ? 1 : 0, bytes / (large ? 1e6 : 1e3),
                  large ? "MB" : "kB");
    return text;
}

/// Size of the partial file of `folder` that was written last; 0 when there is none.
std::uintmax_t partialSize(const fs::path& folder) {
    std::uintmax_t size = 0;
    auto newest = fs::file_time_type::min();
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; entry != end; entry.increment(error)) {
        if (entry->path().extension() != transport::partial_suffix)
            continue;
        std::error_code renamed;  // the library may have finished the file meanwhile
        const auto written = entry->last_write_time(renamed);
        const auto grown = entry->file_size(renamed);
        if (!renamed && written >= newest) {
            newest = written;
            size = grown;
        }
    }
    return size;
}

}  // namespace

DownloadProgress::DownloadProgress(const Output& output, fs::path folder, std::string label)
    : output_(output), folder_(std::move(folder)), label_(std::move(label)) {
    if (output_.hasTerminal())
        watcher_ = std::thread([this] { watch(); });
}

DownloadProgress::~DownloadProgress() {
    if (!watcher_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    wake_.notify_one();
    watcher_.join();
    output_.transient("");
}

void DownloadProgress::watch() {
    using Seconds = std::chrono::duration<double>;
    const auto begin = std::chrono::steady_clock::now();
    std::unique_lock lock(mutex_);
    do {
        const auto bytes = static_cast<double>(partialSize(folder_));
        const Seconds passed = std::chrono::steady_clock::now() - begin;
        const double rate = passed < interval ? 0 : bytes / passed.count();
        output_.transient(label_, "  " + inUnits(bytes) + "  " + inUnits(rate) + "/s");
    } while (!wake_.wait_for(lock, interval, [this] { return ended_; }));
}

}  // namespace tavro::tools
