#pragma once

#include <optional>
#include <string>
#include <string_view>

// How texts and secrets stand behind the '=' of a configuration line.
//
// A text stands as it is wherever it can. What a line cannot hold stands as "@text:" and the
// hexadecimal digits of its bytes, a secret as "@secret:" and those of its concealed form.

/// The form of `text`: one line without outer blanks, which `textOf` turns back into `text`.
std::string storedText(std::string_view text);

/// The text in `stored`, or nothing when it is a secret.
std::optional<std::string> textOf(std::string_view stored);

/// The form of `secret`, in which the secret cannot be read.
std::string storedSecret(std::string_view secret);

/// The secret in `stored`, or nothing when it is none or was damaged.
std::optional<std::string> secretOf(std::string_view stored);
