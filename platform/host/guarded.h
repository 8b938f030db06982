#pragma once

/// The result of `action`, or `onException` when it throws: no exception may leave a function with
/// C linkage.
template <typename Result, typename Action>
Result guarded(Result onException, Action action) noexcept {
    try {
        return action();
    } catch (...) {
        return onException;
    }
}
