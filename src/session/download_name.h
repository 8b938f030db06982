#pragma once

#include <string>

namespace session {

/// Chooses the name under which the file that the service calls `announcedName` gets its place in
/// the folder `folder`: that name up to a zero byte, or the first of "BASE_1.EXT", "BASE_2.EXT" and
/// so on that is free. Another process may take the name at any time.
std::string freeName(const std::string& folder, const std::string& announcedName);

}  // namespace session
