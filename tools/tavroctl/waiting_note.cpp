#include "tavroctl/waiting_note.h"

#include <utility>

namespace tavro::tools {

WaitingNote::WaitingNote(const Output& output, std::string whom)
    : output_(output), whom_(std::move(whom)) {
    if (output_.hasTerminal())
        watcher_ = std::thread([this] { watch(); });
}

WaitingNote::~WaitingNote() {
    if (!watcher_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    wake_.notify_one();
    watcher_.join();
}

void WaitingNote::watch() {
    const auto isEnded = [this] { return ended_; };
    std::unique_lock lock(mutex_);
    if (wake_.wait_for(lock, patience, isEnded))
        return;
    output_.transient("waiting for " + whom_ + " ...");
    wake_.wait(lock, isEnded);
    output_.transient("");
}

}  // namespace tavro::tools
