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
                     std::function<void(const std::string&)> report)
    : database_(openDatabase(database)),
      uploads_(database),
      accounts_(database_),
      catalogue_(database_, checkedFolder(books), uploads_.path(), std::move(report)),
      consumer_(std::move(consumer)) {}

DeviceResponse DeviceApi::handle(DeviceRequest& request) {
    const std::lock_guard lock(mutex_);
    Call call{request, readValues(request), accounts_, catalogue_, consumer_};
    return descriptionOf(request.operation).handler(call);
}

std::vector<Book> DeviceApi::books() {
    const std::lock_guard lock(mutex_);
    return catalogue_.books();
}

std::optional<Book> DeviceApi::findBook(int id) {
    const std::lock_guard lock(mutex_);
    return catalogue_.find(id);
}

}  // namespace tavro::service
