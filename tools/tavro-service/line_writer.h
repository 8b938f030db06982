#pragma once

#include <functional>
#include <memory>
#include <string>

namespace tavro::service {

/// Writes lines to a descriptor on a thread of its own, so that a reader who stands still (a pager,
/// a full pipe) keeps nobody waiting. Every function may be called from any thread.
class LineWriter {
public:
    /// Makes of a number of lines that were dropped a line that says so.
    using DroppedLine = std::function<std::string(std::size_t count)>;

    /// Writes to `descriptor`, which is not closed; `droppedLine` must not throw.
    LineWriter(int descriptor, DroppedLine droppedLine);

    /// Waits until all lines are written, but no longer than half a second.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// Has `line` written, without its end. Drops it if too many wait already.
    void write(const std::string& line);

private:
    struct Queue;

    // Also the thread's, which outlives the object when the reader stands still.
    std::shared_ptr<Queue> queue_;
};

}  // namespace tavro::service
