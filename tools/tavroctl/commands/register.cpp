#include <memory>

#include "account/account_requests.h"
#include "tavroctl/command_line.h"
#include "tavroctl/service_url.h"
#include "tavroctl/shared_options.h"
#include "tavroctl/waiting_note.h"

namespace tavro::tools {

namespace {

void registerAndTell(bool renew, Account& account, const Output& output) {
    const bool changed =
        waitingFor(serviceUrl(), output, [&] { return registerDevice(account, renew); });
    output.result(
        {{"registered", true}, {"changed", changed}},
        changed
            ? "The device is registered. Next: tavroctl signup, or tavroctl login with an account"
            : "The device is registered already (--renew does it again).");
}

}  // namespace

void addRegister(CommandLine& commandLine) {
    const auto renew = std::make_shared<bool>(false);
    CLI::App& command = commandLine.add("register", "Register the device with the service",
                                        "register", withOptions(registerAndTell, renew));
    addFlag(command, "--renew", *renew, "Also if it is registered; ends the session");
}

}  // namespace tavro::tools
