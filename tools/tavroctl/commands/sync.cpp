#include <memory>

#include "account/account_lock.h"
#include "account/catalogue.h"
#include "account/own_files.h"
#include "account/session.h"
#include "platform/device_paths.h"
#include "program/counted.h"
#include "tavro_client.h"
#include "tavroctl/command_line.h"
#include "tavroctl/device_applications.h"
#include "tavroctl/shared_options.h"

namespace tavro::tools {

namespace {

void syncInBackground(const Account& account, const Output& output) {
    requireApplication(device_paths::syncApplication());
    TavroClient().StartSync();
    const std::string log = account.file(own_files::sync_log);
    output.result({{"started", true}, {"log", log}},
                  "The synchronisation has started; what it does stands in " + log);
}

void sync(const Account& account, const Output& output) {
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    synchronise(*session, account);
    const std::size_t books = catalogueOf(*session, account).size();
    const std::size_t deleted = session->server->getDeletedBooks().size();
    output.result(
        {{"books", books}, {"deleted", deleted}, {"serverTime", session->server->serverTime}},
        counted(books, "book") + " in the catalogue, " + std::to_string(deleted) +
            " deleted by the service. Next: tavroctl books, tavroctl download --all");
}

}  // namespace

void addSync(CommandLine& commandLine) {
    const auto background = std::make_shared<bool>(false);
    CLI::App& command =
        commandLine.add("sync", "Fetch the catalogue", "sync --background",
                        [background](const Account& account, const Output& output) {
                            *background ? syncInBackground(account, output) : sync(account, output);
                        });
    addFlag(command, "--background", *background,
            "Start the device's synchronisation application instead: all in one round");
}

}  // namespace tavro::tools
