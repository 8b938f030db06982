#include "tavroctl/retry_pauses.h"

#include <unistd.h>

#include <ctime>

namespace {

constexpr useconds_t microseconds_per_second = 1'000'000;

/// How long a waiting signal may stay unnoticed.
constexpr useconds_t slice = 100'000;

/// Where the countdown shows: `usleep` takes no context, so this alone has to be global.
const tavro::tools::Output* countdown = nullptr;

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
    if (countdown != nullptr && microseconds % microseconds_per_second == 0)
        countdown->transient("upload failed, next step in " +
                             std::to_string(microseconds / microseconds_per_second) + " s");
}

}  // namespace

// The library pauses with `usleep`, and a program's own definition takes the place of the C
// library's: the only way to show how long a silent pause still lasts.
extern "C" __attribute__((visibility("default"))) int usleep(useconds_t microseconds) {
    while (microseconds > 0 && !isInterrupted()) {
        showRemaining(microseconds);
        const useconds_t step = microseconds < slice ? microseconds : slice;
        const timespec pause{0, static_cast<long>(step) * 1000};
        ::nanosleep(&pause, nullptr);
        microseconds -= step;
    }
    if (countdown != nullptr)
        countdown->transient("");
    return 0;
}

namespace tavro::tools {

RetryPauses::RetryPauses(const Output& output) {
    const sigset_t signals = interruptions();
    ::sigprocmask(SIG_BLOCK, &signals, &previous_);
    countdown = &output;
}

bool RetryPauses::areInterrupted() const {
    return isInterrupted();
}

RetryPauses::~RetryPauses() {
    countdown = nullptr;
    ::sigprocmask(SIG_SETMASK, &previous_, nullptr);
}

}  // namespace tavro::tools
