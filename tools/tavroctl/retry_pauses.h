#pragma once

#include <csignal>
#include <string>

#include "console/output.h"
#include "tavro.h"

namespace tavro::tools {

/// What uploads need around them, while it lives: a failed attempt is told with its reason, and the
/// library's pause after it shows as a countdown (both when standard error is a terminal), and
/// SIGINT, SIGTERM and SIGHUP wait until the object goes, because between attempts the pending
/// changes lie in memory only. A signal that waits cuts the pauses short, so that the library soon
/// has them back in its journal. One object at a time; `output` and `session` must outlive it.
class RetryPauses {
public:
    RetryPauses(const Output& output, const Tavro& session);
    ~RetryPauses();
    RetryPauses(const RetryPauses&) = delete;
    RetryPauses& operator=(const RetryPauses&) = delete;

    /// Notes that what fails from now on is the upload of the file `name`.
    void beginUpload(const std::string& name);

    /// Tells that an attempt has failed, and why.
    void tellFailure();

    /// Shows how long the pause still lasts; with 0 seconds, whom the upload waits for.
    void showRemaining(unsigned seconds) const;

    /// Whether a signal waits that will take effect when the object goes.
    bool areInterrupted() const;

private:
    const Output& output_;
    const Tavro& session_;
    std::string file_;
    unsigned attempt_ = 0;
    sigset_t previous_;
};

}  // namespace tavro::tools
