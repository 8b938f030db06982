#pragma once

#include <string>

#include "platform/device_paths.h"
#include "support/temporary_folder.h"

/// The root of this process and of the programs that it starts: a temporary folder, chosen before
/// anything asks for the root, for it stays the same ever after.
const std::string& deviceRoot();

/// A fresh, empty device for one test, with every folder of the fixed paths in place. One at a
/// time.
class DeviceRoot {
public:
    DeviceRoot();

    /// Configuration folder of the account, as `Tavro::init` takes it.
    std::string configuration() const { return device_paths::configurationFolder(); }

    /// The account's file `name`, one of `account_files`.
    std::string file(const std::string& name) const { return configuration() + "/" + name; }

    /// Folder into which books are downloaded.
    std::string syncFolder() const { return deviceRoot() + "/mnt/ext1/Tavro"; }

    /// Lets the library find the service that listens on `port` of 127.0.0.1.
    void writeServerSettings(int port) const;

    /// Writes a complete account configuration, with `more` lines ("key=value\n") added.
    void writeAccount(const std::string& more = {}) const;
};
