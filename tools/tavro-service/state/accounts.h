#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "state/database.h"

namespace tavro::service {

/// A device, however often it registered.
struct RegisteredDevice {
    std::int64_t number = 0;  ///< by which it is spoken of
    std::string id;           ///< its serial number, which is nobody else's business
    std::string type;
    std::int64_t registrations = 0;
    std::vector<std::string> accounts;  ///< e-mails of those that ever logged in there
};

/// An account, without its password.
struct Account {
    std::string email;
    std::string firstName;
    std::string lastName;
    std::int64_t sessions = 0;  ///< how many were ever started
};

/// Devices, accounts and their sessions. Every function throws `std::runtime_error` when the state
/// cannot be read or written.
class Accounts {
public:
    /// Keeps everything in `database`, which must outlive the object.
    explicit Accounts(SQLite::Database& database) : database_(database) {}

    /// Registers a device and returns its new token; earlier tokens stay valid.
    std::string registerDevice(const std::string& deviceId, const std::string& deviceType);

    /// Identifier of the device that was given `token`; none if nobody was.
    std::optional<std::string> deviceOf(const std::string& token);

    /// Opens an account; false if there is one with this e-mail.
    bool create(const std::string& email, const std::string& firstName, const std::string& lastName,
                const std::string& password);

    /// Whether there is an account with this e-mail.
    bool exists(const std::string& email);

    /// The account's number; none if there is no such account or the password is wrong.
    std::optional<std::int64_t> authenticate(const std::string& email, const std::string& password);

    /// Starts a session of `account` on the device of `token` and returns its identifier.
    std::string startSession(const std::string& token, std::int64_t account);

    /// Whether `session` was started on the device of `token`.
    bool hasSession(const std::string& session, const std::string& token);

    /// Number of the device `deviceId`; 0 if it is not registered.
    std::int64_t deviceNumber(const std::string& deviceId);

    /// All devices in the order of their numbers.
    std::vector<RegisteredDevice> devices();

    /// All accounts in the order in which they were opened.
    std::vector<Account> all();

private:
    std::vector<std::string> accountsOn(const std::string& deviceId);

    SQLite::Database& database_;
};

}  // namespace tavro::service
