#pragma once

#include <string>

#include "support/temporary_folder.h"

/// Whether `path` lies below the device root of the tests.
bool isBelowDeviceRoot(const std::string& path);

/// Has the shell run `command` if that only removes something below the device root: a log-out gone
/// wrong must not reach the machine that tests it. For a test's own `system`, which stands before
/// the system's. @return the shell's status; 0 for what is not run.
int runBelowDeviceRoot(const std::string& command);

/// The same for programs that a test starts: the `rm` that their shells find removes below the
/// device root and `folder` only, and their `killall` ends nothing.
void guardStartedPrograms(const TemporaryFolder& folder);
