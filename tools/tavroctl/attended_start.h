#pragma once

#include <sys/types.h>

#include <functional>

namespace tavro::tools {

/// What became of a program.
struct Ended {
    bool isStarted = false;
    bool isDone = false;  ///< with status 0
    pid_t process = -1;   ///< that it was
};

/// Starts a program by `start`, which answers less than 0 if it cannot, and waits until it has
/// ended. Both in a process of its own, with no other child: one that this program was given by the
/// one before it would pass for the program. Throws std::system_error.
Ended attendedStart(const std::function<int()>& start);

}  // namespace tavro::tools
