#include "state/accounts.h"

#include "state/secrets.h"

namespace tavro::service {

std::string Accounts::registerDevice(const std::string& deviceId, const std::string& deviceType) {
    std::string token = randomToken();
    query(database_, "INSERT INTO devices VALUES (?, ?, ?)", token, deviceId, deviceType).exec();
    return token;
}

std::optional<std::string> Accounts::deviceOf(const std::string& token) {
    auto row = query(database_, "SELECT device_id FROM devices WHERE token = ?", token);
    if (!row.executeStep())
        return std::nullopt;
    return row.getColumn(0).getString();
}

bool Accounts::create(const std::string& email, const std::string& firstName,
                      const std::string& lastName, const std::string& password) {
    if (exists(email))
        return false;
    query(database_,
          "INSERT INTO accounts (email, first_name, last_name, password) VALUES (?, ?, ?, ?)",
          email, firstName, lastName, hashPassword(password))
        .exec();
    return true;
}

bool Accounts::exists(const std::string& email) {
    return query(database_, "SELECT 1 FROM accounts WHERE email = ?", email).executeStep();
}

std::optional<std::int64_t> Accounts::authenticate(const std::string& email,
                                                   const std::string& password) {
    auto row = query(database_, "SELECT id, password FROM accounts WHERE email = ?", email);
    if (!row.executeStep() || !isPassword(password, row.getColumn(1)))
        return std::nullopt;
    return row.getColumn(0).getInt64();
}

std::string Accounts::startSession(const std::string& token, std::int64_t account) {
    std::string session = randomToken();
    query(database_, "INSERT INTO sessions VALUES (?, ?, ?)", session, token, account).exec();
    return session;
}

bool Accounts::hasSession(const std::string& session, const std::string& token) {
    return query(database_, "SELECT 1 FROM sessions WHERE id = ? AND token = ?", session, token)
        .executeStep();
}

}  // namespace tavro::service
