#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace tavro::tools {

/// Rows of texts below headings, in columns aligned by their width on the screen.
struct Table {
    static constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

    std::vector<std::string> headings;           ///< none for a table without
    std::vector<std::vector<std::string>> rows;  ///< all as long as `headings`, if there are any

    /// The table as lines, every one with its line end. The widest columns are shortened until a
    /// line takes no more than `screenWidth`, or each is too narrow to lose any more; the first
    /// column never.
    std::string text(std::size_t screenWidth = unlimited) const;
};

}  // namespace tavro::tools
