#pragma once

#include "api/device_response.h"
#include "faults/fault.h"

namespace tavro::service {

/// Whether `fault` does anything at all.
bool hasEffect(const Fault& fault);

/// Whether a request is carried out in spite of `fault`.
bool isCarriedOut(const Fault& fault);

/// Changes `response` to what `fault` makes of it. The delay, the cut and the closed connection are
/// up to whoever sends it.
void apply(const Fault& fault, DeviceResponse& response);

}  // namespace tavro::service
