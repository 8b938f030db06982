#include "scan_line.h"

#include <unistd.h>

#include "posix/write_all.h"

namespace tavro::service {

ScanLine::ScanLine()
    : terminal_(::isatty(STDERR_FILENO) == 1),
      next_(Clock::now() + std::chrono::milliseconds(500)) {}

void ScanLine::show(std::size_t done, std::size_t all) {
    if (done == all)
        return remove();
    const std::lock_guard lock(mutex_);
    if (!terminal_ || Clock::now() < next_)
        return;
    next_ = Clock::now() + std::chrono::milliseconds(100);
    shown_ = true;
    posix::writeAll(STDERR_FILENO, "\rReading books: " + std::to_string(done) + " of " +
                                       std::to_string(all) + ". Stop with Ctrl-C.");
}

void ScanLine::remove() {
    const std::lock_guard lock(mutex_);
    if (shown_)
        posix::writeAll(STDERR_FILENO, "\r\x1B[K");
    shown_ = false;
}

}  // namespace tavro::service
