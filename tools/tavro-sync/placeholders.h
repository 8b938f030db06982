#pragma once

#include <set>
#include <string>
#include <vector>

namespace tavro::tools {

/// The placeholder files that stand in the download folder for books still to be downloaded: one
/// for each, ITEM.file, holding the item id. Files of such a name that hold something else are
/// someone's own and are left alone.
class Placeholders {
public:
    /// Placeholders in `folder`, named without a trailing "/".
    explicit Placeholders(std::string folder) : folder_(std::move(folder)) {}

    /// Full path of the placeholder for `item`.
    std::string path(int item) const;

    /// Makes the placeholders of `items` all that there are. A second call repairs what an
    /// interrupted one left.
    ///
    /// @return what went wrong with single files, which stops none of the others. Throws Failure
    /// when the folder cannot be read.
    std::vector<std::string> replace(const std::set<int>& items) const;

    /// Removes the placeholder for `item`, if there is one.
    void remove(int item) const;

private:
    std::string folder_;
};

}  // namespace tavro::tools
