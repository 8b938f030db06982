#pragma once

#include <cerrno>
#include <system_error>

/// The result of `action`, or `onException` when it throws: no exception may leave a function with
/// C linkage. `errno` then tells the cause, which is a lack of memory unless the exception says.
template <typename Result, typename Action>
Result guarded(Result onException, Action action) noexcept {
    int cause = ENOMEM;
    try {
        return action();
    } catch (const std::system_error& error) {
        cause = error.code().value();
    } catch (...) {
    }
    errno = cause;  // only now, when the exception is gone
    return onException;
}
