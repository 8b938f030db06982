#pragma once

#include <string>

#include "posix/file_descriptor.h"

namespace tavro::tools {

/// The file that tells what the synchronisation did: a line for each step, with time and process.
/// Each line is written with one call, so that lines of several processes do not mix. A log that
/// cannot be written stops nothing.
class ActivityLog {
public:
    /// Opens the file `path` to append to it; one that has grown large is put aside as PATH.old.
    explicit ActivityLog(const std::string& path);

    /// Adds a line. Control characters in `text` become U+FFFD.
    void note(const std::string& text) const;

private:
    posix::FileDescriptor file_;
};

}  // namespace tavro::tools
