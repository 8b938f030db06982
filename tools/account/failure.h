#pragma once

#include <stdexcept>
#include <string>

class TavroServer;

namespace tavro::tools {

/// Why something did not happen, in words for the person who asked for it, and what to try.
class Failure : public std::runtime_error {
public:
    /// `what` completes "PROGRAM: ..."; `toTry` completes "Try: ..." and may be empty.
    explicit Failure(const std::string& what, std::string toTry = {})
        : runtime_error(what), advice(std::move(toTry)) {}

    std::string advice;   ///< what to try; may be empty
    std::string code;     ///< the service's result code; empty unless the service gave one
    std::string message;  ///< the service's explanation; may be empty
};

/// Another process is at work on the account.
class AlreadyRunning : public Failure {
public:
    AlreadyRunning()
        : Failure("another synchronisation of this account is running",
                  "the same command again when it has ended") {}
};

/// A command given in a way that cannot work; the program ends with status 2.
class UsageError : public std::runtime_error {
    using runtime_error::runtime_error;
};

/// Tells what became of the last device-API request or upload of `server`: the service's code and
/// message, or that the answer cannot be read, or that none came from `address` ("HOST:PORT").
///
/// @param what what was being done, as "the login failed".
Failure serviceFailure(const TavroServer& server, const std::string& what,
                       const std::string& address, const std::string& advice);

/// "HOST:PORT" of the device API, as the library has it now.
std::string apiAddress();

/// "HOST:PORT" of the upload page, as the library has it now.
std::string uploadAddress();

/// "HOST:PORT" of the download page, as the library has it now.
std::string downloadAddress();

}  // namespace tavro::tools
