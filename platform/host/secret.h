#pragma once

#include <optional>
#include <string>
#include <string_view>

/// `secret` as bytes among which it is not found; different ones on each call. This keeps a secret
/// from the eye, not from a reader of this code: nothing but the code is needed to reveal it.
/// Throws when the system has no random numbers.
std::string conceal(std::string_view secret);

/// The secret in `concealed`, or nothing when these bytes were damaged.
std::optional<std::string> reveal(std::string_view concealed);
