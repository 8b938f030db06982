#pragma once

#include <string>

namespace tavro::tools {

/// The address of the device API, as the device's settings have it now: "http://HOST:PORT".
std::string serviceUrl();

}  // namespace tavro::tools
