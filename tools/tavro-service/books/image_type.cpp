#include "books/image_type.h"

namespace tavro::service {

std::string imageType(std::string_view bytes) {
    if (bytes.substr(0, 3) == "\xFF\xD8\xFF")
        return "image/jpeg";
    if (bytes.substr(0, 8) == "\x89PNG\r\n\x1A\n")
        return "image/png";
    return "";
}

}  // namespace tavro::service
