#pragma once

#include <string>
#include <vector>

namespace tavro::tools {

/// `texts` with `separator` between them.
inline std::string joined(const std::vector<std::string>& texts, const std::string& separator) {
    std::string whole;
    for (const auto& text : texts)
        whole += (&text == &texts.front() ? "" : separator) + text;
    return whole;
}

}  // namespace tavro::tools
