#include "support/diagnostics.h"

#include <fcntl.h>
#include <unistd.h>

#include "posix/write_all.h"

namespace bench {

namespace {

int diagnostics = STDERR_FILENO;

}  // namespace

void turnTraceAway() {
    diagnostics = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
}

void tell(const std::string& text) {
    posix::writeAll(diagnostics, "tavro_bench: " + text + "\n");
}

}  // namespace bench
