#pragma once

#include <string>
#include <utility>

#include "bookdescription.h"

/// Predicate: whether a book has a certain item id. A malformed record reads as having an empty
/// one.
class DescComp {
public:
    /// Looks for the item id `key`.
    explicit DescComp(std::string key) : key_(std::move(key)) {}

    bool operator()(const BookDescription& book) const {
        return book.field(BookDescription::ItemID) == key_;
    }

private:
    std::string key_;
};
