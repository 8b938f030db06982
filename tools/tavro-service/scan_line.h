#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>

namespace tavro::service {

/// The line on a terminal that tells how far the reading of many books has come. Every function may
/// be called from any thread.
class ScanLine {
public:
    /// Shows nothing unless standard error is a terminal.
    ScanLine();

    ~ScanLine() { remove(); }
    ScanLine(const ScanLine&) = delete;
    ScanLine& operator=(const ScanLine&) = delete;

    /// Shows, from time to time and only if it takes long, that `done` of `all` files were looked
    /// at. Removes the line in the end.
    void show(std::size_t done, std::size_t all);

    /// Removes the line.
    void remove();

private:
    using Clock = std::chrono::steady_clock;

    const bool terminal_;
    std::mutex mutex_;  // of everything below
    Clock::time_point next_;
    bool shown_ = false;
};

}  // namespace tavro::service
