#include "text/extension.h"

#include <strings.h>

namespace tavro::service {

bool hasExtension(std::string_view name, std::string_view extension) {
    if (name.size() < extension.size() + 2 || name[name.size() - extension.size() - 1] != '.')
        return false;
    const std::string_view end = name.substr(name.size() - extension.size());
    return ::strncasecmp(end.data(), extension.data(), extension.size()) == 0;
}

}  // namespace tavro::service
