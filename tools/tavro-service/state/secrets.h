#pragma once

#include <string>

namespace tavro::service {

/// A token that nobody can guess: 32 hexadecimal digits. Throws `std::system_error`.
std::string randomToken();

/// Salted hash of `password`, different each time. Throws `std::system_error`.
std::string hashPassword(const std::string& password);

/// Whether `password` is the one of which `hash` was made.
bool isPassword(const std::string& password, const std::string& hash);

}  // namespace tavro::service
