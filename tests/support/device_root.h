#pragma once

#include <string>

#include "platform/device_paths.h"
#include "support/temporary_folder.h"

/// A fresh, empty device for one test, with every folder of the fixed paths in place.
///
/// The device root is fixed when the library is built, so tests that need it take turns, across
/// processes too: the object holds a lock beside the root for as long as it lives.
class DeviceRoot {
public:
    DeviceRoot();
    ~DeviceRoot();
    DeviceRoot(const DeviceRoot&) = delete;
    DeviceRoot& operator=(const DeviceRoot&) = delete;

    /// Configuration folder of the account, as `Tavro::init` takes it.
    std::string configuration() const { return device_paths::configuration_folder; }

    /// The account's file `name`, one of `account_files`.
    std::string file(const std::string& name) const { return configuration() + "/" + name; }

    /// Folder into which books are downloaded.
    std::string syncFolder() const { return device_paths::root + std::string("/mnt/ext1/Tavro"); }

    /// Lets the library find the service that listens on `port` of 127.0.0.1.
    void writeServerSettings(int port) const;

    /// Writes a complete account configuration, with `more` lines ("key=value\n") added.
    void writeAccount(const std::string& more = {}) const;

private:
    int lock_;
};
