#include "console/screen_text.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <cwctype>

namespace tavro::tools {

namespace {

constexpr const char* replacement_character = "\xEF\xBF\xBD";
constexpr const char* ellipsis = "\xE2\x80\xA6";  // one column

}  // namespace

std::string displayable(const std::string& text) {
    std::mbstate_t state{};
    std::string shown;
    wchar_t character = 0;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t size = std::mbrtowc(&character, &text[at], text.size() - at, &state);
        const bool whole = size > 0 && size <= text.size() - at;
        if (whole && std::iswprint(static_cast<std::wint_t>(character)) != 0)
            shown.append(text, at, size);
        else
            shown += replacement_character;
        if (!whole) {
            size = 1;
            state = {};
        }
        at += size;
    }
    return shown;
}

std::size_t width(const std::string& text) {
    std::wstring wide(text.size(), L'\0');
    const std::size_t length = std::mbstowcs(wide.data(), text.c_str(), wide.size());
    const int columns = length <= wide.size() ? ::wcswidth(wide.data(), length) : -1;
    return columns < 0 ? text.size()  // only without a UTF-8 locale
                       : static_cast<std::size_t>(columns);
}

std::string shortened(const std::string& text, std::size_t columns) {
    if (width(text) <= columns)
        return text;
    std::mbstate_t state{};
    wchar_t character = 0;
    std::size_t end = 0;
    for (std::size_t taken = 1; end < text.size();) {  // the ellipsis has one
        const std::size_t size = std::mbrtowc(&character, &text[end], text.size() - end, &state);
        if (size == 0 || size > text.size() - end)  // only without a UTF-8 locale
            break;
        taken += static_cast<std::size_t>(std::max(::wcwidth(character), 0));
        if (taken > columns)
            break;
        end += size;
    }
    return columns == 0 ? "" : text.substr(0, end) + ellipsis;
}

}  // namespace tavro::tools
