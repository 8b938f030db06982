#pragma once

#include <string>

/// The local time for a line of a log, as "2024-05-01 12:34:56.789".
std::string localTime();
