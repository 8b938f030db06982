#pragma once

#include <functional>

#include "console/output.h"

namespace tavro::tools {

/// An application that the device's programs start, and that a person may start as well.
struct Application {
    const char* name;       ///< of the program
    const char* help;       ///< what --help prints
    const char* parameter;  ///< the one argument that it takes and ignores; null for none
    std::function<int(const Output&)> run;  ///< the work; returns the exit status
};

/// Does what the command line of `application` says: the work, without arguments, or --help or
/// --version. What it throws is told on standard error.
/// @return the exit status: that of the work; 1 when it threw; 2 for wrong use.
int runApplication(const Application& application, int count, char** values);

}  // namespace tavro::tools
