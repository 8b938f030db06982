#include "device-check/module_checks.h"

namespace tavro::device_check {

std::vector<Check> serviceChecks() {
    constexpr int seconds = 120;  // the library's own limit of a request is 60
    return {{"registration", "the service does not know the device",
             "see the server settings and the keys of .tavro.conf", inModule(registration_check),
             seconds},
            {"log-in", "there is no session", "see Email in .tavro.conf, and the password",
             inModule(login_check), seconds},
            {"catalogue", "no books are known", "log in anew", inModule(catalogue_check), seconds},
            {"download", "no book comes", "see downloadUrl and downloadPort of the server settings",
             inModule(download_check), seconds}};
}

}  // namespace tavro::device_check
