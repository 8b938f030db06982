#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace tavro::tools {

/// A thread beside the calling one, which the library blocks. It ends with the object.
class Watcher {
public:
    Watcher() = default;
    ~Watcher() { stop(); }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    /// Does `work` in the thread. `work` has to return soon after `isToGoOnAfter` said no.
    void start(std::function<void()> work) { thread_ = std::thread(std::move(work)); }

    /// Whether the thread was started.
    bool isStarted() const { return thread_.joinable(); }

    /// For the thread: waits for `pause`. @return at once with false when it is to end.
    bool isToGoOnAfter(std::chrono::milliseconds pause);

    /// Ends the thread, if it was started, and waits until it has.
    void stop();

private:
    std::mutex mutex_;  // guards isStopped_
    std::condition_variable wake_;
    bool isStopped_ = false;
    std::thread thread_;
};

}  // namespace tavro::tools
