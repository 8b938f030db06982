// OpenBook: starts an application as a process of its own.

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "guarded.h"
#include "lectern.h"
#include "posix/retry_after_signal.h"

int OpenBook(const char* path, const char* parameters, int /*flags*/) {
    if (path == nullptr) {
        errno = EINVAL;
        return -1;
    }
    // The started program gets copies: nothing writes to these texts.
    char* const arguments[] = {const_cast<char*>(path), const_cast<char*>(parameters), nullptr};
    pid_t process = -1;
    errno = ::posix_spawn(&process, path, nullptr, nullptr, arguments, environ);
    if (errno != 0)
        return -1;
    return guarded(0, [process] {
        // Takes the status when the process ends, so that it does not stay behind as a zombie.
        std::thread([process] {
            posix::retryAfterSignal([process] { return ::waitpid(process, nullptr, 0); });
        }).detach();
        return 0;
    });
}
