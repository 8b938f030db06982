#include "tavroctl/attended_start.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "posix/file_descriptor.h"
#include "posix/retry_after_signal.h"
#include "posix/system_error.h"
#include "posix/write_all.h"

namespace tavro::tools {

namespace {

/// Starts the program, the only child of this process, and waits for it. Whoever takes its status,
/// this does not.
Ended attend(const std::function<int()>& start) {
    std::signal(SIGCHLD, SIG_DFL);  // else the status would get lost
    Ended ended;
    ended.isStarted = start() >= 0;
    siginfo_t told{};
    if (ended.isStarted && posix::retryAfterSignal(
                               [&] { return ::waitid(P_ALL, 0, &told, WEXITED | WNOWAIT); }) == 0) {
        ended.process = told.si_pid;
        ended.isDone = told.si_code == CLD_EXITED && told.si_status == 0;
    }
    return ended;
}

/// Attends the program in this process, and tells what became of it into `pipe`.
[[noreturn]] void attendAndTell(const std::function<int()>& start, int pipe) {
    const Ended ended = attend(start);
    posix::writeAll(pipe, {reinterpret_cast<const char*>(&ended), sizeof ended});
    std::fflush(nullptr);
    ::_exit(0);
}

}  // namespace

Ended attendedStart(const std::function<int()>& start) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        posix::throwSystemError("cannot make a pipe for", "a program");
    const posix::FileDescriptor told(ends[0]);
    posix::FileDescriptor pipe(ends[1]);
    const pid_t process = ::fork();
    if (process == -1)
        posix::throwSystemError("cannot start a process for", "a program");
    if (process == 0)
        attendAndTell(start, pipe.get());
    pipe.close();
    Ended ended;
    const ssize_t size =
        posix::retryAfterSignal([&] { return ::read(told.get(), &ended, sizeof ended); });
    return size == ssize_t{sizeof ended} ? ended : Ended{};
}

}  // namespace tavro::tools
