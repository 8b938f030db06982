#include "line_writer.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "posix/write_all.h"

namespace tavro::service {

struct LineWriter::Queue {
    static constexpr std::size_t most_bytes = 1u << 20;

    void work() {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [this] { return ended || !lines.empty(); });
            if (lines.empty())
                break;
            std::string batch = std::exchange(lines, "");
            if (const std::size_t count = std::exchange(dropped, 0))
                batch += droppedLine(count) + "\n";
            lock.unlock();
            posix::writeAll(descriptor, batch);  // whoever reads may have gone
            lock.lock();
        }
        finished = true;
        changed.notify_all();
    }

    int descriptor = -1;
    DroppedLine droppedLine;
    std::mutex mutex;  // of everything below
    std::condition_variable changed;
    std::string lines;  // that nobody writes yet
    std::size_t dropped = 0;
    bool ended = false;
    bool finished = false;
};

LineWriter::LineWriter(int descriptor, DroppedLine droppedLine)
    : queue_(std::make_shared<Queue>()) {
    queue_->descriptor = descriptor;
    queue_->droppedLine = std::move(droppedLine);
    std::thread([queue = queue_] { queue->work(); }).detach();
}

LineWriter::~LineWriter() {
    std::unique_lock lock(queue_->mutex);
    queue_->ended = true;
    queue_->changed.notify_all();
    queue_->changed.wait_for(lock, std::chrono::milliseconds(500),
                             [this] { return queue_->finished; });
}

void LineWriter::write(const std::string& line) {
    {
        const std::lock_guard lock(queue_->mutex);
        if (queue_->lines.size() + line.size() < Queue::most_bytes)
            queue_->lines += line + "\n";
        else
            ++queue_->dropped;
    }
    queue_->changed.notify_all();
}

}  // namespace tavro::service
