#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "account/book_map.h"
#include "account/book_map_image.h"

namespace tavro::tools {

/// The file in which the tools keep what the book map holds. It has the map's own records, of which
/// the last one of a name counts: a new entry costs one record behind the others.
///
/// A record that was cut is left out, and nothing is ever written behind it: the file is then
/// replaced as a whole, and so it is where most of its records no longer count. To be used under
/// the account's lock.
class BookMapCopy {
public:
    /// The copy in the file `path`, which need not exist.
    explicit BookMapCopy(std::string path) : path_(std::move(path)) {}

    /// The entries that the file holds. Throws Failure when it cannot be read.
    MappedFiles read();

    /// Adds the entry of the file `name`, for the book `item`, with which the file holds just what
    /// `map` does. Throws Failure when it cannot be written; the other entries then stay.
    void add(const std::string& name, int item, const BookMapImage& map);

    /// Makes the entries of `map` the whole content of the file. Throws Failure, with the old
    /// content in place.
    void replace(const BookMapImage& map);

    /// Whether most records of the file, as it was last read or written, count, and none is cut.
    bool isTidy() const { return !isCut_ && records_ <= most_records_per_entry * entries_; }

private:
    static constexpr std::size_t most_records_per_entry = 2;

    bool append(const std::string& record) const;

    std::string path_;
    std::size_t entries_ = 0;
    std::size_t records_ = 0;
    std::size_t length_ = 0;  // of all whole records, in bytes
    bool isCut_ = false;      // whether part of a record stands behind them
};

}  // namespace tavro::tools
