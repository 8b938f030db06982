#pragma once

#include <string>

#include "console/output.h"

namespace tavro::tools {

/// Asks `question`, for a yes or a no, at the terminal. Throws UsageError with the text
/// `withoutTerminal` when standard input is none, Failure unless the answer is yes.
void confirm(const Output& output, const std::string& question, const std::string& withoutTerminal);

}  // namespace tavro::tools
