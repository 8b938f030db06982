#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace bench {

/// Throws unless `holds`: what went wrong must not count as fast.
inline void require(bool holds, std::string_view what) {
    if (!holds)
        throw std::runtime_error("it does not hold that " + std::string(what));
}

}  // namespace bench
