#include "device-check/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "posix/file_descriptor.h"
#include "posix/retry_after_signal.h"
#include "posix/system_error.h"
#include "posix/write_all.h"

namespace tavro::device_check {

namespace {

// One write of so much is not divided, so that one read has the whole result.
constexpr std::size_t longest_result = 4096;

Result resultOf(const Check& check, const Context& context) {
    try {
        return {Status::Ok, check.run(context)};
    } catch (const Skipped& reason) {
        return {Status::Skipped, reason.what()};
    } catch (const std::exception& error) {
        return {Status::Wrong, error.what()};
    }
}

/// Sends what the libraries print to standard error, or nowhere.
void redirectOutput(bool verbose) {
    const posix::FileDescriptor nowhere(::open("/dev/null", O_RDWR | O_CLOEXEC));
    ::dup2(verbose ? STDERR_FILENO : nowhere.get(), STDOUT_FILENO);
    if (!verbose)
        ::dup2(nowhere.get(), STDERR_FILENO);
}

[[noreturn]] void runAndTell(const Check& check, const Context& context, int pipe, bool verbose) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::signal(signal, SIG_DFL);
    redirectOutput(verbose);
    const Result result = resultOf(check, context);
    const std::string message = static_cast<char>(result.status) + result.found;
    posix::writeAll(pipe, message.substr(0, longest_result));
    ::_exit(EXIT_SUCCESS);
}

/// How the child ended that told nothing.
std::string endOf(int status) {
    if (WIFSIGNALED(status))
        return std::string("it crashed: ") + ::strsignal(WTERMSIG(status));
    return "it ended the program with status " + std::to_string(WEXITSTATUS(status)) +
           "; start again with --verbose to see what it printed";
}

Result waitFor(pid_t child, int pipe, int seconds) {
    pollfd answer{pipe, POLLIN, 0};
    const int ready = ::poll(&answer, 1, seconds * 1000);
    std::string message(longest_result, '\0');
    const ssize_t size =
        ready == 1
            ? posix::retryAfterSignal([&] { return ::read(pipe, &message[0], message.size()); })
            : 0;
    if (ready != 1)
        ::kill(-child, SIGKILL);
    int status = 0;
    posix::retryAfterSignal([&] { return ::waitpid(child, &status, 0); });
    if (size > 0)
        return {Status{message[0]}, message.substr(1, static_cast<std::size_t>(size) - 1)};
    if (ready == 0)
        return {Status::Wrong, "it did not end within " + std::to_string(seconds) + " seconds"};
    return {Status::Wrong, ready == -1 ? "it was interrupted" : endOf(status)};
}

}  // namespace

Result runInChild(const Check& check, const Context& context, int seconds, bool verbose) {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) == -1)
        posix::throwSystemError("cannot make", "a pipe");
    const posix::FileDescriptor out(ends[0]);
    posix::FileDescriptor in(ends[1]);
    const pid_t child = ::fork();
    if (child == -1)  // to which a signal would go to all processes
        posix::throwSystemError("cannot start", "a process");
    if (child == 0)
        runAndTell(check, context, in.get(), verbose);
    ::setpgid(child, child);
    in.close();
    return waitFor(child, out.get(), seconds);
}

}  // namespace tavro::device_check
