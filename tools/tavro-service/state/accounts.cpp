#include "state/accounts.h"

#include "state/secrets.h"

namespace tavro::service {

std::string Accounts::registerDevice(const std::string& deviceId, const std::string& deviceType) {
    std::string token = randomToken();
    database_.run("INSERT INTO devices VALUES (?, ?, ?)", token, deviceId, deviceType);
    return token;
}

std::optional<std::string> Accounts::deviceOf(const std::string& token) {
    Statement statement = database_.query("SELECT device_id FROM devices WHERE token = ?", token);
    if (!statement.nextRow())
        return std::nullopt;
    return statement.text(0);
}

bool Accounts::create(const std::string& email, const std::string& firstName,
                      const std::string& lastName, const std::string& password) {
    if (exists(email))
        return false;
    database_.run(
        "INSERT INTO accounts (email, first_name, last_name, password) VALUES (?, ?, ?, ?)", email,
        firstName, lastName, hashPassword(password));
    return true;
}

bool Accounts::exists(const std::string& email) {
    return database_.query("SELECT 1 FROM accounts WHERE email = ?", email).nextRow();
}

std::optional<std::int64_t> Accounts::authenticate(const std::string& email,
                                                   const std::string& password) {
    Statement statement =
        database_.query("SELECT id, password FROM accounts WHERE email = ?", email);
    if (!statement.nextRow() || !isPassword(password, statement.text(1)))
        return std::nullopt;
    return statement.number(0);
}

std::string Accounts::startSession(const std::string& token, std::int64_t account) {
    std::string session = randomToken();
    database_.run("INSERT INTO sessions VALUES (?, ?, ?)", session, token, account);
    return session;
}

bool Accounts::hasSession(const std::string& session, const std::string& token) {
    return database_.query("SELECT 1 FROM sessions WHERE id = ? AND token = ?", session, token)
        .nextRow();
}

}  // namespace tavro::service
