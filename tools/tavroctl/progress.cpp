#include "tavroctl/progress.h"

#include <chrono>
#include <cstdint>
#include <cstdio>

#include "account/service_failure.h"
#include "tavroctl/waiting_note.h"
#include "transport/partial_file.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

constexpr auto interval = std::chrono::milliseconds(200);

/// A file's time may lie so much before the moment of its writing.
constexpr auto clock_tick = std::chrono::milliseconds(10);

/// `bytes` in the unit that suits them, as "1.5 MB".
std::string inUnits(double bytes) {
    char text[32];
    const bool large = bytes >= 1e6;
    std::snprintf(text, sizeof text, "%.*f %s", large ? 1 : 0, bytes / (large ? 1e6 : 1e3),
                  large ? "MB" : "kB");
    return text;
}

/// Size of the partial file of `folder` that was written last, `passed` ago at most; 0 when there
/// is none.
std::uintmax_t partialSize(const fs::path& folder, fs::file_time_type::duration passed) {
    std::uintmax_t size = 0;
    auto newest = fs::file_time_type::clock::now() - passed - clock_tick;
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

DownloadProgress::DownloadProgress(const Output& output, fs::path folder)
    : output_(output), folder_(std::move(folder)) {}

DownloadProgress::~DownloadProgress() {
    watcher_.stop();
    output_.transient("");
}

void DownloadProgress::begin(const std::string& label) {
    if (!output_.hasTerminal())
        return;
    {
        const std::lock_guard lock(mutex_);
        label_ = label;
        begin_ = Clock::now();
    }
    if (!watcher_.isStarted())
        watcher_.start([this] { watch(); });
}

void DownloadProgress::watch() {
    do {
        std::unique_lock lock(mutex_);
        const std::string label = label_;
        const Clock::time_point begin = begin_;
        lock.unlock();  // the next download waits for no folder to be read
        show(label, begin);
    } while (watcher_.isToGoOnAfter(interval));
}

void DownloadProgress::show(const std::string& label, Clock::time_point begin) {
    const Clock::time_point now = Clock::now();
    const std::uintmax_t size = partialSize(folder_, now - begin);
    if (grown_ < begin) {
        grown_ = begin;
        size_ = 0;
    }
    if (size > size_) {
        grown_ = now;
        size_ = size;
    }
    const bool isStored = size == 0 && size_ > 0;  // and has its name by now
    if (!isStored && now - grown_ >= patience)
        return output_.transient(label, "  waiting for " + downloadAddress() + " ...");
    const std::chrono::duration<double> passed = now - begin;
    const auto bytes = static_cast<double>(size_);
    const double rate = passed < interval ? 0 : bytes / passed.count();
    output_.transient(label, "  " + inUnits(bytes) + "  " + inUnits(rate) + "/s");
}

}  // namespace tavro::tools
