#pragma once

#include <cstdio>
#include <exception>

namespace tavro::tools {

/// What all programs end with.
namespace exit_status {

inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrong_usage = 2;

}  // namespace exit_status

/// Tells on standard error, in the name of `program`, what went wrong.
inline void printError(const char* program, const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", program, error.what());
}

/// Does `work`, the whole of the program `program`, which returns the exit status. What it throws
/// goes to `tell(error, status)`, a `Usage` as a wrong use of the program; what that throws in turn
/// to standard error. @return the exit status.
template <typename Usage, typename Work, typename Tell>
int runProgram(const char* program, Work work, Tell tell) {
    try {
        try {
            return work();
        } catch (const Usage& error) {
            tell(error, exit_status::wrong_usage);
            return exit_status::wrong_usage;
        } catch (const std::exception& error) {
            tell(error, exit_status::failed);
        }
    } catch (const std::exception& error) {
        printError(program, error);
    }
    return exit_status::failed;
}

}  // namespace tavro::tools
