#include "local_time.h"

#include <sys/time.h>

#include <ctime>

std::string localTime() {
    timeval now{};
    ::gettimeofday(&now, nullptr);
    tm parts{};
    ::localtime_r(&now.tv_sec, &parts);
    char seconds[32] = "";
    std::strftime(seconds, sizeof seconds, "%F %T", &parts);
    const std::string thousandths = std::to_string(1000 + now.tv_usec / 1000);
    return std::string(seconds) + "." + thousandths.substr(1);
}
