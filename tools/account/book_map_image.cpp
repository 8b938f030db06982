#include "account/book_map_image.h"

#include <algorithm>

#include "account/book_map_records.h"

namespace tavro::tools {

BookMapImage::BookMapImage(const MappedFiles& entries) {
    for (const auto& [name, item] : entries) {
        offsets_.push_back(bytes_.size());
        bytes_ += bookMapRecord(name, item);
    }
}

void BookMapImage::set(const std::string& name, int item) {
    const std::string record = bookMapRecord(name, item);
    auto place = std::lower_bound(
        offsets_.begin(), offsets_.end(), name,
        [this](std::size_t offset, const std::string& wanted) { return nameAt(offset) < wanted; });
    const std::size_t offset = place == offsets_.end() ? bytes_.size() : *place;
    if (place != offsets_.end() && nameAt(offset) == name) {
        bytes_.replace(offset, record.size(), record);
        return;
    }
    bytes_.insert(offset, record);
    for (place = offsets_.insert(place, offset) + 1; place != offsets_.end(); ++place)
        *place += record.size();
}

MappedFiles BookMapImage::entries() const {
    return bookMapEntries(bytes_);
}

}  // namespace tavro::tools
