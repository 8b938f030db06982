#pragma once

#include <httplib.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tavro::service {

/// Threads for connections, made as they are needed: one that waits keeps no other from its thread,
/// until there are very many.
class ConnectionThreads : public httplib::TaskQueue {
public:
    /// Carries out `task` on a thread that has nothing to do, on a new one, or, when there are too
    /// many, on the next that ends its task.
    void enqueue(std::function<void()> task) override;

    /// Returns when all tasks are done and all threads have ended.
    void shutdown() override;

private:
    static constexpr std::size_t most_threads = 512;

    void work();

    std::mutex mutex_;  // of everything below
    std::condition_variable changed_;
    std::deque<std::function<void()>> tasks_;
    std::size_t idle_ = 0;
    bool stopped_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace tavro::service
