#include <memory>

#include "account/account_requests.h"
#include "session/account_keys.h"
#include "tavroctl/account_steps.h"
#include "tavroctl/command_line.h"
#include "tavroctl/service_url.h"
#include "tavroctl/shared_options.h"
#include "tavroctl/waiting_note.h"

namespace tavro::tools {

namespace {

void remind(std::string email, const Account& account, const Output& output) {
    if (email.empty()) {
        requireEmail(account);
        email = account.value(account_keys::email);
    }
    waitingFor(serviceUrl(), output, [&] { remindPassword(account, email); });
    output.result({{"reminded", email}},
                  "The service sends a password reminder to " + displayable(email) + ".");
}

}  // namespace

void addRemind(CommandLine& commandLine) {
    const auto email = std::make_shared<std::string>();
    CLI::App& command = commandLine.add("remind", "Have a password reminder sent",
                                        "remind ada@reader.example", withOptions(remind, email));
    addEmailAddress(command, "EMAIL", *email, "Address (default: the configured one)");
}

}  // namespace tavro::tools
