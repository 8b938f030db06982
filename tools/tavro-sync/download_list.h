#pragma once

#include <string>
#include <vector>

namespace tavro::tools {

/// Makes `files`, full paths in the platform's serialised form, the list of files still to be
/// downloaded at `path`, which the library browser reads. Throws Failure.
///
/// It takes an exclusive `flock` on the list and then puts a whole new file in its place, so that a
/// reader sees the old list or the new one, whenever this process is ended. A browser that shows a
/// pending book keeps its shared lock for as long as it runs; it is waited for a few seconds only,
/// because otherwise no list would change while it runs.
void writeDownloadList(const std::string& path, const std::vector<std::string>& files);

}  // namespace tavro::tools
