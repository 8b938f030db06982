#pragma once

#include <csignal>

#include "console/output.h"

namespace tavro::tools {

/// What uploads need around them, while it lives: the library's pause after a failed attempt shows
/// as a countdown (when standard error is a terminal), and SIGINT, SIGTERM and SIGHUP wait until
/// the object goes, because between attempts the pending changes lie in memory only. A signal that
/// waits cuts the pauses short, so that the library soon has them back in its journal. One object
/// at a time; `output` must outlive it.
class RetryPauses {
public:
    explicit RetryPauses(const Output& output);
    ~RetryPauses();
    RetryPauses(const RetryPauses&) = delete;
    RetryPauses& operator=(const RetryPauses&) = delete;

    /// Whether a signal waits that will take effect when the object goes.
    bool areInterrupted() const;

private:
    sigset_t previous_;
};

}  // namespace tavro::tools
