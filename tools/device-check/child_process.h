#pragma once

#include "device-check/check.h"

namespace tavro::device_check {

/// Runs `check` in a child of this process, so that a crash, an exit or a hang of what it calls is
/// a result like any other. The child is killed after `seconds`, and when a signal interrupts this
/// process. What it prints is dropped unless `verbose`; then it goes to standard error.
Result runInChild(const Check& check, const Context& context, int seconds, bool verbose);

}  // namespace tavro::device_check
