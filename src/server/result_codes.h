#pragma once

/// The service's result codes that mean success.
namespace result_codes {

inline constexpr const char* success = "1003";
inline constexpr const char* reminder_sent = "1014";

}  // namespace result_codes
