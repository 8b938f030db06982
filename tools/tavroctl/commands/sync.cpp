#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>

#include "account/account_lock.h"
#include "account/catalogue.h"
#include "account/own_files.h"
#include "account/round_record.h"
#include "account/session.h"
#include "platform/device_paths.h"
#include "posix/file_descriptor.h"
#include "posix/retry_after_signal.h"
#include "posix/system_error.h"
#include "posix/write_all.h"
#include "program/counted.h"
#include "program/failure.h"
#include "program/run_program.h"
#include "tavro_client.h"
#include "tavroctl/command_line.h"
#include "tavroctl/device_applications.h"
#include "tavroctl/joined.h"
#include "tavroctl/service_url.h"
#include "tavroctl/shared_options.h"
#include "tavroctl/waiting_note.h"

namespace tavro::tools {

namespace {

struct Options {
    bool background = false;
    bool wait = false;
};

/// How the application ended.
struct Ended {
    pid_t process = -1;
    int status = 0;
};

/// Starts the application, waits until it has ended, and tells that into `pipe`. In a process of
/// its own: a child that this program was given by the one before it would pass for the
/// application.
[[noreturn]] void attendApplication(const posix::FileDescriptor& pipe) {
    std::signal(SIGCHLD, SIG_DFL);  // else the application's status would get lost
    TavroClient().StartSync();
    Ended ended;
    while ((ended.process = ::wait(&ended.status)) == -1 && errno == EINTR)
        continue;
    const bool told =
        posix::writeAll(pipe.get(), {reinterpret_cast<const char*>(&ended), sizeof ended});
    std::fflush(nullptr);
    ::_exit(told ? exit_status::done : exit_status::failed);
}

/// Runs the application in the background and waits until it has ended.
Ended runApplication() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        posix::throwSystemError("cannot make a pipe for", "the round");
    const posix::FileDescriptor told(ends[0]);
    posix::FileDescriptor pipe(ends[1]);
    if (const pid_t process = ::fork(); process == 0)
        attendApplication(pipe);
    else if (process == -1)
        posix::throwSystemError("cannot start a process for", "the round");
    pipe.close();
    Ended ended;
    const ssize_t size =
        posix::retryAfterSignal([&] { return ::read(told.get(), &ended, sizeof ended); });
    return size == ssize_t{sizeof ended} ? ended : Ended{};
}

/// Sees that the round of the application, which has `ended` so, is done: from its record. Throws
/// Failure, AlreadyRunning.
void requireDone(const Account& account, const Ended& ended, const std::string& log) {
    const LastRound round = lastRound(account);
    const bool isRecorded = ended.process != -1 && round.process == ended.process;
    if (WIFEXITED(ended.status) && WEXITSTATUS(ended.status) == 0 && ended.process != -1) {
        if (isRecorded)
            return;
        throw AlreadyRunning();
    }
    if (!isRecorded || round.outcome == round_outcome::interrupted)
        throw Failure(isRecorded ? "the round was interrupted" : "the round failed",
                      "see " + log + ", run the same command again");
    Failure failure("the round failed: " + joined(round.problems, "; "), round.advice);
    failure.code = round.code;
    failure.message = round.message;
    if (failure.advice.empty())
        failure.advice = "see " + log + " and 'tavroctl status', run the same command again";
    throw failure;
}

void syncInBackground(const Options& options, const Account& account, const Output& output) {
    requireApplication(device_paths::syncApplication());
    const std::string log = account.file(own_files::sync_log);
    if (!options.wait) {
        TavroClient().StartSync();
        return output.result({{"started", true}, {"log", log}},
                             "The synchronisation has started; what it does stands in " + log);
    }
    requireDone(account, waitingFor("tavro_sync.app", output, runApplication), log);
    output.result({{"started", true}, {"log", log}},
                  "The round is done; what it did stands in " + log);
}

void sync(const Account& account, const Output& output) {
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    waitingFor(serviceUrl(), output, [&] { synchronise(*session, account); });
    const std::size_t books = catalogueOf(*session, account).size();
    const std::size_t deleted = session->server->getDeletedBooks().size();
    output.result(
        {{"books", books}, {"deleted", deleted}, {"serverTime", session->server->serverTime}},
        counted(books, "book") + " in the catalogue, " + std::to_string(deleted) +
            " deleted by the service. Next: tavroctl books, tavroctl download --all");
}

void run(const Options& options, const Account& account, const Output& output) {
    if (options.wait && !options.background)
        throw UsageError("--wait waits for the round of --background");
    options.background ? syncInBackground(options, account, output) : sync(account, output);
}

}  // namespace

void addSync(CommandLine& commandLine) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = commandLine.add("sync", "Fetch the catalogue", "sync --background --wait",
                                        withOptions(run, options));
    addFlag(command, "--background", options->background,
            "Start the device's synchronisation application instead: all in one round");
    addFlag(command, "--wait", options->wait,
            "With --background: wait until the round has ended, and fail if it failed");
}

}  // namespace tavro::tools
