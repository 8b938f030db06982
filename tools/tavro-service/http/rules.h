#pragma once

#include <httplib.h>

#include <cstddef>

#include "http/request_log.h"

namespace tavro::service {

/// Adds what holds for every request: who may control the service, no body larger than
/// `maximumBody` bytes, and what becomes of unknown pages and of failures, of which `log` is told.
/// The last to be added, for its page takes whatever no other page takes.
void addRules(httplib::Server& server, RequestLog& log, std::size_t maximumBody);

}  // namespace tavro::service
