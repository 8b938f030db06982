#include "device-check/command_line.h"

#include <getopt.h>

#include <cstdlib>
#include <stdexcept>

#include "device-check/check.h"

namespace tavro::device_check {

const char* const help =
    R"(Usage: tavro-device-check [OPTION...]

Checks on a device whether libtavro.so will work there: the libraries, the calls of the platform,
the file system and the fixed paths. Prints a line for each check: what is wrong breaks what it says.
What a check calls runs in a process of its own, so that it may crash or hang. What is written lies in
a folder ".tavro-device-check-" and six characters, which is removed at the end; only a killed program
leaves it.

  --service         also ask the configured service: registration (unless the device has a token),
                    log-in, catalogue, a download. Nothing that the device has stored is changed
  --password-stdin  log in with the line from standard input instead of the stored password
  --event           also send the event of a log-out (SendEventTo)
  --open FILE       also open the application FILE (OpenBook)
  --folder FOLDER   write below FOLDER (default: where the configuration folder lies)
  --timeout SECONDS for each check (default: 20, for a request 120)
  --verbose         show what the libraries print, on standard error
  --json            print one JSON document
  --help, --version

Examples:
  LD_LIBRARY_PATH=. ./tavro-device-check
  tavro-device-check --folder /mnt/ext1/Tavro        # the file system of the books
  tavro-device-check --service --password-stdin < password.txt
  tavro-device-check --open /ebrmain/bin/tavro_wizard.app

Exit status: 0 nothing is wrong, 1 something is, 2 wrong use.
)";

namespace {

constexpr option options[] = {{"service", no_argument, nullptr, 's'},
                              {"password-stdin", no_argument, nullptr, 'p'},
                              {"event", no_argument, nullptr, 'e'},
                              {"open", required_argument, nullptr, 'o'},
                              {"folder", required_argument, nullptr, 'f'},
                              {"timeout", required_argument, nullptr, 't'},
                              {"verbose", no_argument, nullptr, 'v'},
                              {"json", no_argument, nullptr, 'j'},
                              {"help", no_argument, nullptr, 'h'},
                              {"version", no_argument, nullptr, 'V'},
                              {nullptr, 0, nullptr, 0}};

int secondsIn(const char* text) {
    constexpr long most = 3600;
    char* end = nullptr;
    const long seconds = std::strtol(text, &end, 10);
    if (*end != 0 || seconds < 1 || seconds > most)
        throw std::invalid_argument("--timeout takes a number of seconds from 1 to 3600");
    return static_cast<int>(seconds);
}

/// Where the flag of `letter` lies; null for what is no flag.
bool* flagOf(Options& result, int letter) {
    switch (letter) {
        case 's':
            return &result.service;
        case 'p':
            return &result.readPassword;
        case 'e':
            return &result.event;
        case 'v':
            return &result.verbose;
        case 'j':
            return &result.json;
        case 'h':
            return &result.help;
        case 'V':
            return &result.version;
        default:
            return nullptr;
    }
}

void apply(Options& result, int letter) {
    if (bool* const flag = flagOf(result, letter))
        *flag = true;
    else if (letter == 'o')
        result.application = optarg;
    else if (letter == 'f')
        result.folder = optarg;
    else if (letter == 't')
        result.seconds = secondsIn(optarg);
    else
        throw std::invalid_argument(std::string("unknown or incomplete option; try --help"));
}

}  // namespace

Options readCommandLine(int count, char** values) {
    Options result;
    for (int letter = 0; (letter = ::getopt_long(count, values, "", options, nullptr)) != -1;)
        apply(result, letter);
    if (::optind != count)
        throw std::invalid_argument(std::string(values[::optind]) + " is no option; try --help");
    if (result.readPassword && !result.service)
        throw std::invalid_argument("--password-stdin needs --service");
    return result;
}

}  // namespace tavro::device_check
