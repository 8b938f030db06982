#include <memory>

#include "account/account_lock.h"
#include "account/catalogue.h"
#include "account/own_files.h"
#include "account/round_record.h"
#include "account/session.h"
#include "platform/device_paths.h"
#include "program/counted.h"
#include "program/failure.h"
#include "tavro_client.h"
#include "tavroctl/attended_start.h"
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

/// Sees that the round of the application, which has `ended` so, is done: from its record. Throws
/// Failure, AlreadyRunning.
void requireDone(const Account& account, const Ended& ended, const std::string& log) {
    const LastRound round = lastRound(account);
    const bool isRecorded = ended.process != -1 && round.process == ended.process;
    if (ended.isDone) {
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
    requireDone(account,
                waitingFor("tavro_sync.app", output,
                           [] { return attendedStart([] { return TavroClient().StartSync(); }); }),
                log);
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
