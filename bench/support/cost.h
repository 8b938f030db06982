#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// What an action took.
struct Cost {
    double processor = 0;  ///< seconds of processor time
    double elapsed = 0;    ///< seconds until it was done
    double peak = 0;       ///< bytes of memory at most; 0 where `Action::peak` tells
};

Cost operator+(const Cost& left, const Cost& right);

/// Something that can be done again and again.
struct Action {
    std::function<Cost()> run;
    std::function<double()> peak;  ///< bytes of memory that it takes at most
};

/// Calls `action` in this process, and before it, unmeasured, `prepare`. Its peak is what a copy of
/// this process grows by.
Action inProcess(
    const std::function<void()>& action, const std::function<void()>& prepare = [] {});

/// Runs the programs `programs`, each a path and its arguments, one after the other; before them,
/// unmeasured, `prepare`.
Action inPrograms(
    const std::vector<std::string>& programs, const std::function<void()>& prepare = [] {});

/// The number behind `name` in what the system tells of the process `process` ("self", or its id),
/// which is in units of 1024 bytes, in bytes.
double memoryOf(const std::string& process, const std::string& name);

}  // namespace bench
