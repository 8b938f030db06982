#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <optional>

#include "posix/file_descriptor.h"
#include "posix/inherited_descriptors.h"
#include "program/failure.h"
#include "program/run_program.h"
#include "tavroctl/command_line.h"

namespace {

/// Opens the standard streams that are closed; a result still fails when nobody can have it.
void openStandardStreams() {
    const bool isOutputClosed = ::fcntl(STDOUT_FILENO, F_GETFD) == -1;
    posix::openStandardStreams();
    if (!isOutputClosed)
        return;
    const posix::FileDescriptor unwritable(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    ::dup2(unwritable.get(), STDOUT_FILENO);
}

}  // namespace

int main(int count, char** values) {
    using namespace tavro::tools;
    openStandardStreams();
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the service's texts are UTF-8, whatever the terminal
    std::optional<CommandLine> commandLine;
    return runProgram<UsageError>(
        "tavroctl", [&] { return commandLine.emplace().run(count, values); },
        [&](const std::exception& error, int status) {
            commandLine ? commandLine->tell(error, status) : printError("tavroctl", error);
        });
}
