#include <memory>

#include "account/account_requests.h"
#include "account/session.h"
#include "console/password_prompt.h"
#include "tavroctl/account_steps.h"
#include "tavroctl/command_line.h"
#include "tavroctl/service_url.h"
#include "tavroctl/shared_options.h"
#include "tavroctl/waiting_note.h"

namespace tavro::tools {

namespace {

void logInAndTell(bool passwordFromStandardInput, Account& account, const Output& output) {
    requireEmail(account);
    openSession(account, Need::Device);  // rather than ask for a password in vain
    const std::string password = readPassword(output, passwordFromStandardInput, false);
    waitingFor(serviceUrl(), output, [&] { logIn(account, password); });
    printLoggedIn(account, output);
}

}  // namespace

void addLogin(CommandLine& commandLine) {
    const auto passwordFromStandardInput = std::make_shared<bool>(false);
    CLI::App& command = commandLine.add("login", "Log in and keep the session for later commands",
                                        "login --password-stdin < password.txt",
                                        withOptions(logInAndTell, passwordFromStandardInput));
    addPasswordOption(command, *passwordFromStandardInput);
}

}  // namespace tavro::tools
