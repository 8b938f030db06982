#include "console/table.h"

#include <algorithm>
#include <numeric>

#include "console/screen_text.h"

namespace tavro::tools {

namespace {

using Line = std::vector<std::string>;

constexpr std::size_t gap = 2;        // between columns
constexpr std::size_t narrowest = 8;  // that a column is made

/// How wide each column of `lines` is.
std::vector<std::size_t> widthsOf(const std::vector<Line>& lines) {
    std::vector<std::size_t> widths;
    for (const Line& line : lines) {
        widths.resize(line.size());
        for (std::size_t column = 0; column < line.size(); ++column)
            widths[column] = std::max(widths[column], width(line[column]));
    }
    return widths;
}

/// Takes from the widest of `widths` what a line has more than `screenWidth`. The first column
/// stays whole, as the next command may need what it says.
void narrow(std::vector<std::size_t>& widths, std::size_t screenWidth) {
    if (widths.size() < 2)
        return;
    std::size_t total = std::accumulate(widths.begin(), widths.end(), gap * (widths.size() - 1));
    for (; total > screenWidth; --total) {
        const auto widest = std::max_element(widths.begin() + 1, widths.end());
        if (*widest <= narrowest)
            return;
        --*widest;
    }
}

}  // namespace

std::string Table::text(std::size_t screenWidth) const {
    auto lines = rows;
    if (!headings.empty())
        lines.insert(lines.begin(), headings);
    for (Line& line : lines)
        for (std::string& cell : line)
            cell = displayable(cell);
    auto widths = widthsOf(lines);
    narrow(widths, screenWidth);
    std::string text;
    for (const Line& line : lines) {
        for (std::size_t column = 0; column < line.size(); ++column) {
            const std::string shown = shortened(line[column], widths[column]);
            text += shown;
            if (column + 1 < line.size())
                text += std::string(widths[column] - width(shown) + gap, ' ');
        }
        text += "\n";
    }
    return text;
}

}  // namespace tavro::tools
