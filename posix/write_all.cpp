#include "posix/write_all.h"

#include <unistd.h>

#include "posix/retry_after_signal.h"

namespace posix {

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            retryAfterSignal([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (count == -1)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace posix
