#include "console/application.h"

#include <clocale>
#include <cstdio>
#include <exception>
#include <string>

#include "account/failure.h"

namespace tavro::tools {

namespace {

constexpr int exit_failed = 1;
constexpr int exit_wrong_usage = 2;

int runGuarded(const Application& application) {
    const Output output(application.name, false);
    try {
        return application.run(output);
    } catch (const UsageError& usageError) {
        output.error(Failure(usageError.what()));
        return exit_wrong_usage;
    } catch (const Failure& failure) {
        output.error(failure);
    } catch (const std::exception& error) {
        output.error(Failure(error.what()));
    }
    return exit_failed;
}

int parseAndRun(const Application& application, int count, char** values) {
    const std::string argument = count == 2 ? values[1] : "";
    if (count == 1 || (application.parameter != nullptr && argument == application.parameter))
        return runGuarded(application);
    if (argument == "--help")
        std::printf("%s", application.help);
    else if (argument == "--version")
        std::printf("%s " TAVRO_VERSION "\n", application.name);
    else
        std::fprintf(stderr, "%s: these arguments mean nothing here; see --help\n",
                     application.name);
    return argument == "--help" || argument == "--version" ? 0 : exit_wrong_usage;
}

}  // namespace

int runApplication(const Application& application, int count, char** values) {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the service's texts are UTF-8, whatever the terminal
    try {
        return parseAndRun(application, count, values);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", application.name, error.what());
        return exit_failed;
    }
}

}  // namespace tavro::tools
