#pragma once

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>

namespace session {

/// The item id `itemId` as the book map holds it: a decimal number, saturated to 32 bits as on the
/// device; 0 for a text without one.
inline int itemNumber(const std::string& itemId) {
    const long number = std::strtol(itemId.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

}  // namespace session
