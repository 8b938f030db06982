#pragma once

#include <gtest/gtest.h>

#include "account/account_requests.h"
#include "account/journal.h"
#include "support/device_root.h"
#include "support/test_service.h"

/// A running service and a device whose account is logged in to it, nothing synchronised yet.
class LoggedInDevice : public testing::Test {
protected:
    LoggedInDevice() {
        device.writeServerSettings(service.port());
        device.writeAccount();
        account = tavro::tools::Account(device.configuration());
        tavro::tools::registerDevice(account, false);
        tavro::tools::openAccount(account, "password");
        tavro::tools::logIn(account, "password");
    }

    /// Journals that the book `oldName` is now the file `newName`.
    void journalChange(const std::string& oldName, const std::string& newName) const {
        SyncJournal(journal).push({oldName, newName, false});
    }

    const DeviceRoot device;
    const TemporaryFolder folder;
    TestService service{folder};
    tavro::tools::Account account{device.configuration()};
    const std::string journal = account.file(account_files::journal);
};
