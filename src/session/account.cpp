#include <cstdio>
#include <utility>

#include "platform/configuration.h"
#include "tavro.h"

namespace {

/// Replaces the password in the password store `path`. A store that cannot be opened is the
/// platform's concern: the account request goes out all the same.
void storePassword(const std::string& path, const std::string& password) {
    auto store = platform::openConfiguration(path);
    WriteSecret(store.get(), "password", password.c_str());
    platform::save(std::move(store));
}

}  // namespace

bool Tavro::createUser(const std::string& newPassword) {
    if (!hasDevice())
        return false;
    storePassword(configPath(tavro_password), newPassword);
    return server->CreateUser(email, firstName, lastName, newPassword) != 1;
}

bool Tavro::login(const std::string& givenPassword) {
    if (!hasDevice())
        return false;
    if (givenPassword.empty() && password.empty())
        return false;
    const std::string& sent = givenPassword.empty() ? password : givenPassword;
    // The argument is stored as given: a login with the stored password empties the store.
    storePassword(configPath(tavro_password), givenPassword);
    if (server->loginUser(email, sent) == 1) {
        std::fputs("Can't login", stderr);
        return false;
    }
    return true;
}

bool Tavro::forgetPassword(const std::string& address) {
    if (!hasDevice())
        return false;
    if (server->forgetPassword(address) == 1) {
        std::fputs("Can't forget password", stderr);
        return false;
    }
    return true;
}
