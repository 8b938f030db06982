#pragma once

#include <cstdint>
#include <string>

#include "support/device_root.h"
#include "support/server_process.h"
#include "support/temporary_folder.h"

namespace bench {

/// A running local service with small text books, and a device whose account is logged in to it.
class ReaderAccount {
public:
    explicit ReaderAccount(std::int64_t books);

    /// Takes the books and the book map from the device.
    void removeBooks() const;

    /// The body of the account's request for its catalogue.
    std::string syncRequest() const;

    /// Puts all books and a complete book map onto the device.
    void placeBooks() const;

private:
    const TemporaryFolder folder_;

public:
    const std::string bookFolder;  ///< of the service
    const ServerProcess service;
    const DeviceRoot device;
};

}  // namespace bench
