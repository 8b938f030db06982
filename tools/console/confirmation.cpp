#include "console/confirmation.h"

#include <unistd.h>

#include <iostream>

#include "program/failure.h"

namespace tavro::tools {

void confirm(const Output& output, const std::string& question,
             const std::string& withoutTerminal) {
    if (::isatty(STDIN_FILENO) != 1)
        throw UsageError(withoutTerminal);
    output.prompt(question + " [y/N] ");
    std::string answer;
    std::getline(std::cin, answer);
    if (answer != "y" && answer != "Y" && answer != "yes")
        throw Failure("nothing was changed");
}

}  // namespace tavro::tools
