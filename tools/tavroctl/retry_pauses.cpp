#include "tavroctl/retry_pauses.h"

#include <unistd.h>

#include <ctime>

#include "account/service_failure.h"
#include "tavroctl/change_report.h"

namespace {

constexpr useconds_t microseconds_per_second = 1'000'000;

/// How long a waiting signal may stay unnoticed.
constexpr useconds_t slice = 100'000;

/// What the pauses belong to: `usleep` takes no context, so this alone has to be global.
tavro::tools::RetryPauses* current = nullptr;

sigset_t interruptions() {
    sigset_t signals;
    sigemptyset(&signals);
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, signal);
    return signals;
}

bool isInterrupted() {
    sigset_t pending;
    sigpending(&pending);
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        if (sigismember(&pending, signal) == 1)
            return true;
    return false;
}

void showRemaining(useconds_t microseconds) {
    if (current != nullptr && microseconds % microseconds_per_second == 0)
        current->showRemaining(microseconds / microseconds_per_second);
}

}  // namespace

// The library pauses with `usleep`, and a program's own definition takes the place of the C
// library's: the only way to show how long a silent pause still lasts.
extern "C" __attribute__((visibility("default"))) int usleep(useconds_t microseconds) {
    if (current != nullptr)
        current->tellFailure();
    while (microseconds > 0 && !isInterrupted()) {
        showRemaining(microseconds);
        const useconds_t step = microseconds < slice ? microseconds : slice;
        const timespec pause{0, static_cast<long>(step) * 1000};
        ::nanosleep(&pause, nullptr);
        microseconds -= step;
    }
    showRemaining(0);
    return 0;
}

namespace tavro::tools {

RetryPauses::RetryPauses(const Output& output, const Tavro& session)
    : output_(output), session_(session) {
    const sigset_t signals = interruptions();
    ::sigprocmask(SIG_BLOCK, &signals, &previous_);
    current = this;
}

void RetryPauses::beginUpload(const std::string& name) {
    file_ = name;
    attempt_ = 0;
    showRemaining(0);
}

void RetryPauses::tellFailure() {
    const std::string what =
        "attempt " + std::to_string(++attempt_) + " to upload " + file_ + " failed";
    output_.transient("");
    if (output_.hasTerminal())
        output_.prompt(displayable(uploadFailure(session_, what).what()) + "\n");
}

void RetryPauses::showRemaining(unsigned seconds) const {
    output_.transient(seconds == 0 ? "uploading " + file_ + " to " + uploadAddress() + " ..."
                                   : "next step in " + std::to_string(seconds) + " s");
}

bool RetryPauses::areInterrupted() const {
    return isInterrupted();
}

RetryPauses::~RetryPauses() {
    current = nullptr;
    output_.transient("");
    ::sigprocmask(SIG_SETMASK, &previous_, nullptr);
}

}  // namespace tavro::tools
