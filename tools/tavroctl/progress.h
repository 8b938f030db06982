#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>

#include "console/output.h"
#include "tavroctl/watcher.h"

namespace tavro::tools {

/// Shows of one download after the other its label, size and rate, or whom it waits for when it
/// does not grow, until it goes, when standard error is a terminal. A thread of its own watches the
/// partial files of `folder`, since the library blocks the calling thread; `output` must outlive
/// the object.
class DownloadProgress {
public:
    DownloadProgress(const Output& output, std::filesystem::path folder);
    ~DownloadProgress();
    DownloadProgress(const DownloadProgress&) = delete;
    DownloadProgress& operator=(const DownloadProgress&) = delete;

    /// Tells that the download `label` begins.
    void begin(const std::string& label);

private:
    using Clock = std::chrono::steady_clock;

    void watch();
    void show(const std::string& label, Clock::time_point begin);

    const Output& output_;
    const std::filesystem::path folder_;
    std::mutex mutex_;  // guards label_ and begin_
    std::string label_;
    Clock::time_point begin_;

    // What the watcher knows of the download under way:
    std::uintmax_t size_ = 0;
    Clock::time_point grown_;
    Watcher watcher_;
};

}  // namespace tavro::tools
