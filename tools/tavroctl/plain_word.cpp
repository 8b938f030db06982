#include "tavroctl/plain_word.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "platform/device_paths.h"

namespace tavro::tools {

bool isPlainWord(const std::string& text) {
    constexpr std::string_view punctuation = device_paths::plain_punctuation;
    return std::all_of(text.begin(), text.end(), [=](unsigned char character) {
        return (character < 0x80 && std::isalnum(character) != 0) ||
               punctuation.find(static_cast<char>(character)) != std::string_view::npos;
    });
}

}  // namespace tavro::tools
