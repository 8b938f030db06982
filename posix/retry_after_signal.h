#pragma once

#include <cerrno>

namespace posix {

/// Makes a system call again for as long as a signal interrupts it, and returns its result.
template <typename Call>
auto retryAfterSignal(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

}  // namespace posix
