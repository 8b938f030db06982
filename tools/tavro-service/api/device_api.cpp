#include "api/device_api.h"

namespace fs = std::filesystem;

namespace tavro::service {

namespace {

const fs::path& checkedFolder(const fs::path& books) {
    if (!books.empty() && !fs::is_directory(books))
        throw std::runtime_error(books.string() +
                                 " is no folder; --books wants the folder of the books");
    return books;
}

}  // namespace

DeviceApi::DeviceApi(const fs::path& database, const fs::path& books,
                     std::optional<Consumer> consumer,
                     std::function<void(const std::string&)> report, const ScanProgress& progress)
    : database_(openDatabase(database)),
      uploads_(database),
      accounts_(database_),
      catalogue_(database_, checkedFolder(books), uploads_.path(), std::move(report)),
      consumer_(std::move(consumer)) {
    catalogue_.refresh(progress);
}

DeviceResponse DeviceApi::handle(DeviceRequest& request) {
    const std::lock_guard lock(mutex_);
    Call call{request, readValues(request), accounts_, catalogue_, consumer_};
    return descriptionOf(request.operation).handler(call);
}

std::int64_t DeviceApi::deviceNumber(const DeviceRequest& request) {
    try {
        const Values values = readValues(request);
        const auto token = values.find("Token");
        const auto device = values.find("DeviceId");
        const std::lock_guard lock(mutex_);
        if (token != values.end())
            return accounts_.deviceNumber(accounts_.deviceOf(token->second).value_or(""));
        return device != values.end() ? accounts_.deviceNumber(device->second) : 0;
    } catch (const RequestError&) {
        return 0;  // it cannot be read
    }
}

std::vector<RegisteredDevice> DeviceApi::devices() {
    const std::lock_guard lock(mutex_);
    return accounts_.devices();
}

std::vector<Account> DeviceApi::accounts() {
    const std::lock_guard lock(mutex_);
    return accounts_.all();
}

std::vector<Book> DeviceApi::books() {
    const std::lock_guard lock(mutex_);
    return catalogue_.books();
}

int DeviceApi::bookCount() {
    const std::lock_guard lock(mutex_);
    return catalogue_.count();
}

std::optional<Book> DeviceApi::findBook(int id) {
    const std::lock_guard lock(mutex_);
    return catalogue_.find(id);
}

}  // namespace tavro::service
