#pragma once

#include <string>

#include "program/failure.h"

class TavroServer;

namespace tavro::tools {

/// Whether the result code `code` means that the service does not know the device.
bool isUnknownDevice(const std::string& code);

/// Tells what became of the last device-API request or upload of `server`: the service's code and
/// message, or that the answer cannot be read, or that none came from `address` ("HOST:PORT").
///
/// @param what what was being done, as "the login failed".
/// @param advice what to try when the service refused, unless it does not know the device.
Failure serviceFailure(const TavroServer& server, const std::string& what,
                       const std::string& address, const std::string& advice);

/// Tells that no answer came from `address` to what was being done.
Failure noAnswer(const std::string& what, const std::string& address);

/// Whether somebody takes connections at the download page, of whose failures the library tells no
/// reason. Blocks for some seconds where nobody answers.
bool isDownloadPageReachable();

/// "HOST:PORT" of the device API, as the library has it now.
std::string apiAddress();

/// "HOST:PORT" of the upload page, as the library has it now.
std::string uploadAddress();

/// "HOST:PORT" of the download page, as the library has it now.
std::string downloadAddress();

}  // namespace tavro::tools
