#pragma once

#include <string>

namespace tavro::device_check {

/// What the program is to do.
struct Options {
    bool help = false;
    bool version = false;
    bool json = false;
    bool verbose = false;
    bool event = false;
    bool service = false;
    bool readPassword = false;
    int seconds = 0;          ///< for each check; 0 for its own limit
    std::string folder;       ///< where the checks write
    std::string application;  ///< to be opened, unless empty
};

/// The text of `--help`.
extern const char* const help;

/// Reads the arguments. Throws `std::invalid_argument` for a wrong use.
Options readCommandLine(int count, char** values);

}  // namespace tavro::device_check
