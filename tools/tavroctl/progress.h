#pragma once

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

#include "console/output.h"

namespace tavro::tools {

/// Shows `label`, and size and rate of the download under way, until it goes, when standard error
/// is a terminal. A thread of its own watches the partial files of `folder`, since the library
/// blocks the calling thread; `output` must outlive the object.
class DownloadProgress {
public:
    DownloadProgress(const Output& output, std::filesystem::path folder, std::string label);
    ~DownloadProgress();
    DownloadProgress(const DownloadProgress&) = delete;
    DownloadProgress& operator=(const DownloadProgress&) = delete;

private:
    void watch();

    const Output& output_;
    const std::filesystem::path folder_;
    const std::string label_;
    std::mutex mutex_;  // guards ended_
    std::condition_variable wake_;
    bool ended_ = false;
    std::thread watcher_;
};

}  // namespace tavro::tools
