#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "api/handlers.h"
#include "state/database.h"

namespace tavro::service {

/// The service behind its addresses: the state, and the operations on it. Every function may be
/// called from any thread.
class DeviceApi {
public:
    /// Opens the state file `database` (in memory if empty) and reads the folder `books`. Only
    /// `consumer` may register devices, if it is set; `report` is told of unreadable books, and
    /// `progress` of the books read so far. Throws `std::runtime_error` that says what to do.
    DeviceApi(const std::filesystem::path& database, const std::filesystem::path& books,
              std::optional<Consumer> consumer, std::function<void(const std::string&)> report,
              const ScanProgress& progress);

    /// Carries out `request`. Throws `RequestError` when it is to be refused, and other exceptions
    /// when the service itself fails.
    DeviceResponse handle(DeviceRequest& request);

    /// All items of the catalogue, deleted ones among them.
    std::vector<Book> books();

    /// How many items the catalogue has, without deleted ones.
    int bookCount();

    /// The item `id`, unless there is none or it was deleted.
    std::optional<Book> findBook(int id);

    /// Number of the registered device that sent `request`; 0 if that cannot be told.
    std::int64_t deviceNumber(const DeviceRequest& request);

    /// All devices that registered.
    std::vector<RegisteredDevice> devices();

    /// All accounts.
    std::vector<Account> accounts();

    /// The folder in which the files of forms are to be received.
    const std::filesystem::path& uploads() const { return uploads_.path(); }

private:
    std::mutex mutex_;  // of everything below
    SQLite::Database database_;
    const UploadFolder uploads_;
    Accounts accounts_;
    Catalogue catalogue_;
    const std::optional<Consumer> consumer_;
};

}  // namespace tavro::service
