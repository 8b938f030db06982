#pragma once

#include <sys/prctl.h>
#include <sys/types.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <stdexcept>
#include <type_traits>

namespace bench {

/// A copy of this process that ends at the latest with it.
class Child {
public:
    /// Runs `action` in the copy, with a descriptor to write a result to.
    explicit Child(const std::function<void(int result)>& action);

    /// Ends the copy, if this is the process that made it.
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t id() const { return process_; }

    /// Waits for the copy to write a `Result`. Throws when it ends without.
    template <typename Result>
    Result result() const {
        static_assert(std::is_trivially_copyable_v<Result>);
        Result result;
        if (::read(results_, &result, sizeof result) != sizeof result)
            throw std::runtime_error("a child process failed");
        return result;
    }

private:
    const pid_t owner_ = ::getpid();
    int results_ = -1;
    pid_t process_ = -1;
};

/// Writes `value` to `descriptor`, for `Child::result`.
template <typename Result>
void send(int descriptor, const Result& value) {
    [[maybe_unused]] const ssize_t written = ::write(descriptor, &value, sizeof value);
}

/// What `action` returns, called in a copy of this process.
template <typename Action>
auto inChild(const Action& action) {
    return Child([&](int descriptor) { send(descriptor, action()); })
        .template result<decltype(action())>();
}

}  // namespace bench
