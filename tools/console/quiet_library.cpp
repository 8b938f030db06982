#include "console/quiet_library.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace tavro::tools {

namespace {

/// Lets both standard streams write to the given descriptors; what they hold in their buffers
/// still goes where they wrote so far.
void redirect(int output, int error) {
    std::fflush(stdout);
    std::fflush(stderr);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(error, STDERR_FILENO);
}

}  // namespace

QuietLibrary::QuietLibrary(const Output& output, bool trace) : output_(output) {
    const posix::FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    const int target = trace ? output.standardError() : nowhere.get();
    redirect(target, target);
}

QuietLibrary::~QuietLibrary() {
    redirect(output_.standardOutput(), output_.standardError());
}

LoudAgain::LoudAgain(const Output& output)
    : output_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)),
      error_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
    redirect(output.standardOutput(), output.standardError());
}

LoudAgain::~LoudAgain() {
    redirect(output_.get(), error_.get());
}

}  // namespace tavro::tools
