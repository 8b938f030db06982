#pragma once

#include <sys/time.h>

#include <ctime>
#include <string>

/// The local time for a line of a log, as "2024-05-01 12:34:56.789".
inline std::string localTime() {
    timeval now{};
    ::gettimeofday(&now, nullptr);
    tm parts{};
    ::localtime_r(&now.tv_sec, &parts);
    char seconds[32] = "";
    std::strftime(seconds, sizeof seconds, "%F %T.", &parts);
    return seconds + std::to_string(1000 + now.tv_usec / 1000).substr(1);
}
