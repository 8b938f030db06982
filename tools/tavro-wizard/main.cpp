// The login wizard that the device's programs open.

#include "console/application.h"
#include "console/quiet_library.h"
#include "platform/device_paths.h"
#include "posix/inherited_descriptors.h"
#include "tavro-wizard/wizard.h"

namespace {

using namespace tavro::tools;

constexpr const char* help =
    R"(Usage: tavro_wizard.app [-library]

Logs somebody in to the Tavro book service, in a dialogue at the terminal: with an account that is
there or a new one. The device's programs open it with the parameter -library; a developer does so
with 'tavroctl wizard'.

  --help     show this text
  --version  show the version

Exit status: 0 logged in; 1 left without logging in, or something failed; 2 wrong use.
)";

int holdDialogue(const Output& output) {
    const QuietLibrary quiet(output, false);
    Account account(device_paths::configurationFolder());
    return Wizard(account, output).run() ? 0 : 1;
}

}  // namespace

int main(int count, char** values) {
    posix::openStandardStreams();
    posix::closeInheritedDescriptors();
    return runApplication({"tavro_wizard.app", help, device_paths::wizard_argument, holdDialogue},
                          count, values);
}
