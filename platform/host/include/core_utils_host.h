/// Calls of the stand-in libcore_utils.so beyond those of the device's library, for the project's
/// own tools and tests. Code that is to run on a device must not use them.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace folium::utilities {

/// Writes `strings` to `out` in the form that `SerializationUtils::DeserializeStringVec` reads.
/// @return false when the stream fails, or when a count or length does not fit into 32 bits.
bool SerializeStringVec(std::ostream& out, const std::vector<std::string>& strings);

}  // namespace folium::utilities
