#pragma once

#include <string>
#include <string_view>

namespace tavro::service {

/// `text` as one line of valid UTF-8 that XML can carry: blanks are collapsed to single ones and
/// trimmed, characters that XML does not allow are dropped, broken UTF-8 becomes U+FFFD.
std::string cleanText(std::string_view text);

}  // namespace tavro::service
