#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "account/book_map.h"

namespace tavro::tools {

/// What the library writes into the file of a book map: to compare a file with it takes a look at
/// its bytes, which is far less than to read its records.
class BookMapImage {
public:
    BookMapImage() = default;

    /// The file of a map that holds `entries`.
    explicit BookMapImage(const MappedFiles& entries);

    /// Makes the file `name` belong to the book `item`.
    void set(const std::string& name, int item);

    /// All bytes of the file.
    const std::string& bytes() const { return bytes_; }

    /// How many entries there are.
    std::size_t size() const { return offsets_.size(); }

    /// The entries.
    MappedFiles entries() const;

private:
    std::string_view nameAt(std::size_t offset) const { return bytes_.data() + offset; }

    std::string bytes_;
    std::vector<std::size_t> offsets_;  // of the records in the bytes
};

}  // namespace tavro::tools
