#pragma once

#include <string>
#include <string_view>

#include "console/output.h"

namespace tavro::tools {

/// Makes `content` the content of the file `path`. A regular file is replaced as a whole; what is
/// anything else (a link, a FIFO, a device) stays that and is written to. Throws Failure.
///
/// @param output tells what standard output is when `path` leads there, as /dev/stdout does.
void writeOutputFile(const Output& output, const std::string& path, std::string_view content);

}  // namespace tavro::tools
