#pragma once

#include <cstring>
#include <string>

#include "posix/files.h"

namespace store {

/// Writes `text` up to its first zero byte, and a zero byte, to the open file `descriptor`.
inline void writeText(int descriptor, const std::string& text) {
    posix::writeUnchecked(descriptor, text.c_str(), std::strlen(text.c_str()) + 1);
}

}  // namespace store
