#include "tavroctl/account_steps.h"

#include "program/failure.h"
#include "session/account_keys.h"

namespace tavro::tools {

std::string missingStep(const Account& account) {
    if (!account.isConfigured())
        return "tavroctl setup";
    if (!account.isRegistered())
        return "tavroctl register";
    return account.isLoggedIn() ? "" : "tavroctl login";
}

void requireEmail(const Account& account) {
    if (account.isConfigured() && account.value(account_keys::email).empty())
        throw Failure("no e-mail address is configured",
                      "run 'tavroctl setup --email ADDRESS' first");
}

void printLoggedIn(const Account& account, const Output& output) {
    const std::string email = account.value(account_keys::email);
    output.result({{"loggedIn", true}, {"account", email}},
                  "Logged in as " + displayable(email) + ".");
}

}  // namespace tavro::tools
