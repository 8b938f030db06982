#include "tavroctl/waiting_note.h"

#include <utility>

namespace tavro::tools {

WaitingNote::WaitingNote(const Output& output, std::string whom)
    : output_(output), whom_(std::move(whom)) {
    if (output_.hasTerminal())
        watcher_.start([this] { watch(); });
}

WaitingNote::~WaitingNote() {
    watcher_.stop();
    if (isShown_)
        output_.transient("");
}

void WaitingNote::watch() {
    if (!watcher_.isToGoOnAfter(patience))
        return;
    isShown_ = true;
    output_.transient("waiting for " + whom_ + " ...");
}

}  // namespace tavro::tools
