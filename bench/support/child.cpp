#include "support/child.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <exception>

#include "support/diagnostics.h"

namespace bench {

namespace {

/// Runs `action`, whose standard output nobody wants, and ends the process.
[[noreturn]] void runAndEnd(const std::function<void(int)>& action, int result) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    try {
        action(result);
        ::_exit(0);
    } catch (const std::exception& error) {
        tell(error.what());
        ::_exit(1);
    }
}

}  // namespace

Child::Child(const std::function<void(int result)>& action) {
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) == -1 || (process_ = ::fork()) == -1)
        throw std::runtime_error("no child process can be made");
    if (process_ == 0)
        runAndEnd(action, pipe[1]);
    ::close(pipe[1]);
    results_ = pipe[0];
}

Child::~Child() {
    ::close(results_);
    if (::getpid() != owner_)
        return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
}

}  // namespace bench
