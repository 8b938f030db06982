#pragma once

#include <string>

namespace bench {

/// Turns the standard error stream, to which the library has libcurl write its trace, away.
void turnTraceAway();

/// Writes a line to what was the standard error stream before.
void tell(const std::string& text);

}  // namespace bench
