#include <unistd.h>

#include <csignal>
#include <optional>

#include "account/files.h"
#include "console/quiet_library.h"
#include "platform/account_files.h"
#include "platform/device_paths.h"
#include "program/failure.h"
#include "session/account_keys.h"
#include "tavro_client.h"
#include "tavroctl/account_steps.h"
#include "tavroctl/attended_start.h"
#include "tavroctl/command_line.h"
#include "tavroctl/device_applications.h"

namespace tavro::tools {

namespace {

/// What tells one login from the next.
std::string loginOf(const Account& account) {
    const auto marker = contentOf(account.file(account_files::login_marker));
    return Account(account.folder()).value(account_keys::session) + "\n" + marker.value_or("");
}

void runWizard(const Account& account, const Output& output) {
    requireApplication(device_paths::wizardApplication());
    std::optional<QuietLibrary> divertedFromResult;
    if (output.isJson())
        divertedFromResult.emplace(output, true);
    std::signal(SIGINT, [](int) {});  // Ctrl-C is for the wizard, in which this handler is reset
    TavroClient client;
    const std::string before = loginOf(account);
    if (!attendedStart([&] { return client.StartLoginWizard(); }).isStarted)
        throw Failure("the login wizard cannot be started",
                      "run 'tavroctl setup' again, which links it to its place");
    if (::isatty(STDIN_FILENO) == 0 && loginOf(account) == before)  // another's may need none
        throw UsageError(
            "the wizard has logged nobody in; without a terminal on standard input there is "
            "'tavroctl login --password-stdin'");
    if (!client.IsLoggedIn())
        throw Failure("nobody is logged in", "run 'tavroctl wizard' again, or 'tavroctl login'");
    printLoggedIn(Account(account.folder()), output);  // as the wizard has left it
}

}  // namespace

void addWizard(CommandLine& commandLine) {
    commandLine.add("wizard", "Log in with the device's login wizard", "wizard", runWizard,
                    CommandLine::Streams::AsTheyAre);  // the wizard takes them over
}

}  // namespace tavro::tools
