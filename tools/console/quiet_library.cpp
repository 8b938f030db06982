#include "console/quiet_library.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "posix/file_descriptor.h"

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

}  // namespace tavro::tools
