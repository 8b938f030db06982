#include <clocale>
#include <optional>

#include "account/failure.h"
#include "program/run_program.h"
#include "tavroctl/command_line.h"

int main(int count, char** values) {
    using namespace tavro::tools;
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the service's texts are UTF-8, whatever the terminal
    std::optional<CommandLine> commandLine;
    return runProgram<UsageError>(
        "tavroctl", [&] { return commandLine.emplace().run(count, values); },
        [&](const std::exception& error, int status) {
            commandLine ? commandLine->tell(error, status) : printError("tavroctl", error);
        });
}
