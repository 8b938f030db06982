#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavro::service {

/// `text` as one line of valid UTF-8 that XML can carry: blanks are collapsed to single ones and
/// trimmed, characters that XML does not allow are dropped, broken UTF-8 becomes U+FFFD.
std::string cleanText(std::string_view text);

/// `text` as a terminal may show it: control characters and what is no UTF-8 become U+FFFD.
std::string visibleText(std::string_view text);

/// `bytes` as lower-case hexadecimal digits.
std::string hexEncode(std::string_view bytes);

/// The bytes of which `digits` are the hexadecimal digits; none if they are not pairs of digits.
std::optional<std::string> hexDecode(std::string_view digits);

}  // namespace tavro::service
