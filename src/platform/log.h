#pragma once

#include <core_utils.h>

namespace platform {

/// Levels of the system log.
enum LogLevel : int {
    log_error = 1,
    log_trace = 4,
};

}  // namespace platform
