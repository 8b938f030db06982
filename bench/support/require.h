#pragma once

#include <stdexcept>
#include <string>

namespace bench {

/// Throws unless `holds`: what went wrong must not count as fast.
inline void require(bool holds, const std::string& what) {
    if (!holds)
        throw std::runtime_error("it does not hold that " + what);
}

}  // namespace bench
