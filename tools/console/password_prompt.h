#pragma once

#include <string>

#include "console/output.h"

namespace tavro::tools {

/// Reads the account password: with `fromStandardInput` the first line of standard input,
/// otherwise what is typed at the terminal, without echo, and with `twice` again to be sure.
/// Blocks. The terminal gets its echo back whatever happens, signals included.
///
/// Throws UsageError without a terminal and when the password is empty or holds control characters,
/// Failure when the two entries differ.
std::string readPassword(const Output& output, bool fromStandardInput, bool twice);

}  // namespace tavro::tools
