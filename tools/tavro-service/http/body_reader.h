#pragma once

#include <httplib.h>

#include <cstddef>
#include <filesystem>
#include <string>

#include "api/device_request.h"

namespace tavro::service {

/// Reads the body of a request that is no form. Throws `RequestError` if it is larger than `limit`
/// bytes or does not arrive whole; what is too large is read to its end all the same, so that the
/// client gets to see the answer.
std::string readBody(const httplib::Request& request, const httplib::ContentReader& reader,
                     std::size_t limit);

/// Reads the body of a request to its end, for nothing.
void discardBody(const httplib::Request& request, const httplib::ContentReader& reader);

/// Reads a multipart form of at most `limit` bytes; its part "file" goes into a file in `folder`.
/// Throws `RequestError` alike, also if the body is no form or one with very many or
/// long names.
Form readForm(const httplib::Request& request, const httplib::ContentReader& reader,
              std::size_t limit, const std::filesystem::path& folder);

}  // namespace tavro::service
