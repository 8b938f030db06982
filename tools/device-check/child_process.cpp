#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "device-check/check.h"
#include "posix/retry_after_signal.h"
#include "posix/system_error.h"
#include "posix/write_all.h"

namespace tavro::device_check {

namespace {

std::string statusAndFindings(const Check& check, Context& context) {
    try {
        return 'o' + check.run(context);
    } catch (const Skipped& reason) {
        return std::string("s") + reason.what();
    } catch (const std::exception& error) {
        return std::string("w") + error.what();
    }
}

/// What a child tells its parent: what it leaves for the next check, and the result at the end.
std::string messageOf(const Check& check, Context& context) {
    const std::string result = statusAndFindings(check, context);
    return context.token + '\0' + context.session + '\0' + context.item + '\0' + result;
}

Result resultIn(const std::string& message, Context& context) {
    std::string result;
    std::istringstream fields(message);
    for (std::string* field : {&context.token, &context.session, &context.item, &result})
        std::getline(fields, *field, '\0');
    expect(!result.empty(), "an answer is too long");
    return {result[0], result.substr(1)};
}

[[noreturn]] void runAndTell(const Check& check, Context& context, int pipe) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::signal(signal, SIG_DFL);
    if (!context.verbose)
        ::dup2(openFile("/dev/null", O_RDWR).get(), STDERR_FILENO);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    posix::writeAll(pipe, messageOf(check, context).substr(0, PIPE_BUF));  // undivided
    ::_exit(EXIT_SUCCESS);
}

/// How the child ended that told nothing.
std::string endOf(int status) {
    if (WIFSIGNALED(status))
        return std::string("it crashed: ") + ::strsignal(WTERMSIG(status));
    return "it ended the program with status " + std::to_string(WEXITSTATUS(status)) +
           "; start again with --verbose to see what it printed";
}

Result waitFor(pid_t child, int pipe, int seconds, Context& context) {
    pollfd answer{pipe, POLLIN, 0};
    const int ready = ::poll(&answer, 1, seconds * 1000);
    char message[PIPE_BUF];
    const auto read = [&] { return ::read(pipe, message, sizeof message); };
    const ssize_t size = ready == 1 ? posix::retryAfterSignal(read) : 0;
    if (ready != 1)
        ::kill(-child, SIGKILL);
    int status = 0;
    posix::retryAfterSignal([&] { return ::waitpid(child, &status, 0); });
    if (size > 0)
        return resultIn({message, static_cast<std::size_t>(size)}, context);
    if (ready == 0)
        return {'w', "it did not end within " + std::to_string(seconds) + " seconds"};
    return {'w', ready == -1 ? "it was interrupted" : endOf(status)};
}

}  // namespace

Result runInChild(const Check& check, Context& context) {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) == -1)
        posix::throwSystemError("cannot make", "a pipe");
    const posix::FileDescriptor out(ends[0]);
    posix::FileDescriptor in(ends[1]);
    const pid_t child = ::fork();
    if (child == -1)  // to which a signal would go to all processes
        posix::throwSystemError("cannot start", "a process");
    if (child == 0)
        runAndTell(check, context, in.get());
    ::setpgid(child, child);
    in.close();
    return waitFor(child, out.get(), check.seconds, context);
}

}  // namespace tavro::device_check
