#include "tavroctl/watcher.h"

namespace tavro::tools {

bool Watcher::isToGoOnAfter(std::chrono::milliseconds pause) {
    std::unique_lock lock(mutex_);
    return !wake_.wait_for(lock, pause, [this] { return isStopped_; });
}

void Watcher::stop() {
    if (!isStarted())
        return;
    {
        const std::lock_guard lock(mutex_);
        isStopped_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

}  // namespace tavro::tools
