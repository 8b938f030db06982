#pragma once

#include <string>

namespace tavro::tools {

/// Whether a shell takes `text` as one word that means itself.
bool isPlainWord(const std::string& text);

}  // namespace tavro::tools
