#include "http/connection_threads.h"

#include <system_error>
#include <utility>

namespace tavro::service {

void ConnectionThreads::enqueue(std::function<void()> task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
        try {
            if (tasks_.size() > idle_ && threads_.size() < most_threads)
                threads_.emplace_back([this] { work(); });
        } catch (const std::system_error&) {
            // The machine has no more threads: the task waits for one of those that are there.
        }
    }
    changed_.notify_one();
}

void ConnectionThreads::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        ++idle_;
        changed_.wait(lock, [this] { return stopped_ || !tasks_.empty(); });
        --idle_;
        if (tasks_.empty())
            return;
        const std::function<void()> task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
}

void ConnectionThreads::shutdown() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

}  // namespace tavro::service
