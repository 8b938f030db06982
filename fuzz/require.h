#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the fuzzer, which keeps the input, when a promise does not hold.
inline void require(bool holds, const char* promise) {
    if (holds)
        return;
    std::fprintf(stderr, "Broken promise: %s\n", promise);
    std::abort();
}
