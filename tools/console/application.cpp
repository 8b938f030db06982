#include "console/application.h"

#include <clocale>
#include <cstdio>
#include <string>

#include "program/device_root.h"
#include "program/failure.h"
#include "program/run_program.h"

namespace tavro::tools {

namespace {

int parseAndRun(const Application& application, int count, char** values) {
    const std::string argument = count == 2 ? values[1] : "";
    if (count == 1 || (application.parameter != nullptr && argument == application.parameter)) {
        requireDeviceRoot();
        return application.run(Output(application.name, false));
    }
    if (argument == "--help")
        std::printf("%s", application.help);
    else if (argument == "--version")
        std::printf("%s " TAVRO_VERSION "\n", application.name);
    else
        throw UsageError("these arguments mean nothing here; see --help");
    return exit_status::done;
}

}  // namespace

int runApplication(const Application& application, int count, char** values) {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the service's texts are UTF-8, whatever the terminal
    return runProgram<UsageError>(
        application.name, [&] { return parseAndRun(application, count, values); },
        [&](const std::exception& error, int) { Output(application.name, false).error(error); });
}

}  // namespace tavro::tools
