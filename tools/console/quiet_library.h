#pragma once

#include "console/output.h"
#include "posix/file_descriptor.h"

namespace tavro::tools {

/// While it lives, what the library writes to standard output and standard error (libcurl's trace,
/// raw answers, fixed texts) goes nowhere, or with `trace` both to the real standard error, so
/// that the results stay clean. `output`, which must outlive it, is not affected.
class QuietLibrary {
public:
    QuietLibrary(const Output& output, bool trace);
    ~QuietLibrary();
    QuietLibrary(const QuietLibrary&) = delete;
    QuietLibrary& operator=(const QuietLibrary&) = delete;

private:
    const Output& output_;
};

/// While it lives, the standard streams are again what `output` has them as, amid a QuietLibrary:
/// for paths such as /dev/stdout.
class LoudAgain {
public:
    explicit LoudAgain(const Output& output);
    ~LoudAgain();
    LoudAgain(const LoudAgain&) = delete;
    LoudAgain& operator=(const LoudAgain&) = delete;

private:
    posix::FileDescriptor output_;
    posix::FileDescriptor error_;
};

}  // namespace tavro::tools
