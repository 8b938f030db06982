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

std::int64_t Accounts::deviceNumber(const std::string& deviceId) {
    auto row =
        query(database_, "SELECT IFNULL(MIN(rowid), 0) FROM devices WHERE device_id = ?", deviceId);
    row.executeStep();
    return row.getColumn(0).getInt64();
}

std::vector<RegisteredDevice> Accounts::devices() {
    std::vector<RegisteredDevice> devices;
    auto row = query(database_,
                     "SELECT MIN(rowid) AS number, device_id, device_type, COUNT(*) FROM devices"
                     " GROUP BY device_id ORDER BY number");
    while (row.executeStep())
        devices.push_back({row.getColumn(0).getInt64(), row.getColumn(1), row.getColumn(2),
                           row.getColumn(3).getInt64(), accountsOn(row.getColumn(1))});
    return devices;
}

std::vector<std::string> Accounts::accountsOn(const std::string& deviceId) {
    std::vector<std::string> emails;
    auto row = query(database_,
                     "SELECT email FROM accounts WHERE id IN (SELECT account FROM sessions"
                     " JOIN devices USING (token) WHERE device_id = ?) ORDER BY id",
                     deviceId);
    while (row.executeStep())
        emails.push_back(row.getColumn(0));
    return emails;
}

std::vector<Account> Accounts::all() {
    std::vector<Account> accounts;
    auto row = query(database_,
                     "SELECT email, first_name, last_name,"
                     " (SELECT COUNT(*) FROM sessions WHERE account = accounts.id)"
                     " FROM accounts ORDER BY id");
    while (row.executeStep())
        accounts.push_back(
            {row.getColumn(0), row.getColumn(1), row.getColumn(2), row.getColumn(3).getInt64()});
    return accounts;
}

}  // namespace tavro::service
