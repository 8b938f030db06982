#pragma once

#include <stdexcept>
#include <string_view>

namespace tavro::service {

/// How a request ended: the code of the answer's "Error" element, the HTTP status and the text of
/// its "Message" element.
struct Result {
    const char* code;
    int status;
    const char* message;
};

/// Every result code of the service.
namespace result {

inline constexpr Result success{"1003", 200, "Success"};
inline constexpr Result reminder_sent{"1014", 200, "A password reminder was sent"};
inline constexpr Result malformed_request{"2001", 200, "The request is malformed"};
inline constexpr Result missing_value{"2002", 200, "The request lacks a required value"};
inline constexpr Result body_too_large{"2003", 413, "The request is too large"};
inline constexpr Result unknown_consumer{"2004", 200, "Unknown consumer ID or password"};
inline constexpr Result unknown_device{"2005", 200, "The token belongs to another device"};
inline constexpr Result unknown_token{"2006", 200, "Unknown device token"};
inline constexpr Result existing_account{"2007", 200, "There is an account with this e-mail"};
inline constexpr Result wrong_password{"2008", 200, "Wrong e-mail or password"};
inline constexpr Result unknown_session{"2009", 200, "Unknown session"};
inline constexpr Result unknown_item{"2010", 200, "Unknown item"};
inline constexpr Result unknown_account{"2011", 200, "There is no account with this e-mail"};
inline constexpr Result server_error{"2099", 500, "The service failed"};
inline constexpr Result requested_fault{"", 200, "A fault asked for by the developer"};

}  // namespace result

/// Whether a device takes `code` for success, in one operation or another.
inline bool isSuccess(std::string_view code) {
    return code == result::success.code || code == result::reminder_sent.code;
}

/// Thrown when a request is refused.
class RequestError : public std::runtime_error {
public:
    /// Refuses it for the reason `result`, which lasts.
    explicit RequestError(const Result& result)
        : std::runtime_error(result.message), result_(result) {}

    /// What the answer carries.
    const Result& result() const { return result_; }

private:
    const Result& result_;
};

}  // namespace tavro::service
