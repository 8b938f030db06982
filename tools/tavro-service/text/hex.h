#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavro::service {

/// `bytes` as lower-case hexadecimal digits.
std::string hexEncode(std::string_view bytes);

/// The bytes of which `digits` are the hexadecimal digits; none if they are not pairs of digits.
std::optional<std::string> hexDecode(std::string_view digits);

}  // namespace tavro::service
