#include <memory>

#include "account/account_requests.h"
#include "account/session.h"
#include "console/password_prompt.h"
#include "session/account_keys.h"
#include "tavroctl/account_steps.h"
#include "tavroctl/command_line.h"
#include "tavroctl/service_url.h"
#include "tavroctl/shared_options.h"
#include "tavroctl/waiting_note.h"

namespace tavro::tools {

namespace {

void signUp(bool passwordFromStandardInput, const Account& account, const Output& output) {
    requireEmail(account);
    openSession(account, Need::Device);  // rather than ask for a password in vain
    const std::string password = readPassword(output, passwordFromStandardInput, true);
    waitingFor(serviceUrl(), output, [&] { openAccount(account, password); });
    const std::string email = account.value(account_keys::email);
    output.result({{"account", email}},
                  "The account " + displayable(email) + " is open. Next: tavroctl login");
}

}  // namespace

void addSignup(CommandLine& commandLine) {
    const auto passwordFromStandardInput = std::make_shared<bool>(false);
    CLI::App& command =
        commandLine.add("signup", "Open an account with the configured e-mail address", "signup",
                        withOptions(signUp, passwordFromStandardInput));
    addPasswordOption(command, *passwordFromStandardInput);
}

}  // namespace tavro::tools
