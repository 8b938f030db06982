#include "support/cost.h"

#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "support/child.h"

namespace bench {

namespace {

double secondsOf(clockid_t clock) {
    timespec time = {};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Runs `program` by the launcher, a small process: a program counts what its parent has.
Cost launched(const std::string& program) {
    const std::string command = TAVRO_BENCH_LAUNCHER " " + program;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(::popen(command.c_str(), "r"),
                                                                 ::pclose);
    std::array<char, 256> line = {};
    const bool told = output && std::fgets(line.data(), line.size(), output.get()) != nullptr;
    std::istringstream numbers(told ? line.data() : "");
    Cost cost;
    int status = -1;
    if (!(numbers >> cost.processor >> cost.elapsed >> cost.peak >> status) || status != 0)
        throw std::runtime_error("status " + std::to_string(status) + " of " + program);
    return cost;
}

}  // namespace

Cost operator+(const Cost& left, const Cost& right) {
    return {left.processor + right.processor, left.elapsed + right.elapsed,
            std::max(left.peak, right.peak)};
}

Action inProcess(const std::function<void()>& action, const std::function<void()>& prepare) {
    const auto run = [action, prepare] {
        prepare();
        const double start = secondsOf(CLOCK_MONOTONIC);
        const double used = secondsOf(CLOCK_PROCESS_CPUTIME_ID);
        action();
        return Cost{secondsOf(CLOCK_PROCESS_CPUTIME_ID) - used, secondsOf(CLOCK_MONOTONIC) - start};
    };
    const auto growth = [action, prepare] {
        prepare();
        const double before = memoryOf("self", "VmRSS:");
        action();
        return memoryOf("self", "VmHWM:") - before;
    };
    const auto peak = [growth] {
        ::malloc_trim(0);  // what is free already would be taken without growing
        return inChild(growth);
    };
    return {run, peak};
}

Action inPrograms(const std::vector<std::string>& programs, const std::function<void()>& prepare) {
    const auto run = [programs, prepare] {
        prepare();
        Cost cost;
        for (const std::string& program : programs)
            cost = cost + launched(program);
        return cost;
    };
    return {run, [run] { return run().peak; }};
}

double memoryOf(const std::string& process, const std::string& name) {
    std::ifstream status("/proc/" + process + "/status");
    for (std::string word; status >> word;) {
        double kibibytes = 0;
        if (word == name && status >> kibibytes)
            return kibibytes * 1024;
    }
    throw std::runtime_error("the system does not tell " + name + " of process " + process);
}

}  // namespace bench
