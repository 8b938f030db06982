#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>

#include "http/request_log.h"
#include "state/accounts.h"
#include "state/book.h"

namespace tavro::service {

/// JSON whose keys stay in the order in which they were set.
using Json = nlohmann::ordered_json;

// What whoever controls the service is told. Nothing of it is a secret: no password, token or
// session, and of a device's serial number only its end.

Json toJson(const Request& request);
Json toJson(const Book& book);
Json toJson(const RegisteredDevice& device);
Json toJson(const Account& account);

/// `time` as this machine's local time, "2026-05-01T12:00:00+0200".
std::string timeText(std::chrono::system_clock::time_point time);

}  // namespace tavro::service
