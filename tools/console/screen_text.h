#pragma once

#include <cstddef>
#include <string>

namespace tavro::tools {

// Texts as a terminal shows them. The program must have chosen a UTF-8 locale.

/// `text` as it may go to a terminal: control characters and bytes that are no UTF-8 become U+FFFD.
std::string displayable(const std::string& text);

/// Columns that the displayable text `text` takes on a terminal.
std::size_t width(const std::string& text);

/// The displayable text `text` if it takes no more than `columns`; else as much of its beginning as
/// they hold with an ellipsis.
std::string shortened(const std::string& text, std::size_t columns);

}  // namespace tavro::tools
