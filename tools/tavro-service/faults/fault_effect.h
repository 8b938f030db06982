#pragma once

#include "api/device_response.h"
#include "faults/fault.h"

namespace tavro::service {

/// Whether a request is carried out in spite of `fault`.
bool isCarriedOut(const Fault& fault);

/// Changes `response` to what `fault` makes of it. The delay, the cut and the closed connection are
/// up to whoever sends it.
void apply(const Fault& fault, DeviceResponse& response);

}  // namespace tavro::service
