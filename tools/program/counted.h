#pragma once

#include <cstddef>
#include <string>

namespace tavro::tools {

/// `number` things that are called `noun` when there is one: "1 book", "2 books".
inline std::string counted(std::size_t number, const std::string& noun) {
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

}  // namespace tavro::tools
