#pragma once

#include <string>

/// Small pictures, made by hand from the formats' descriptions, in few grey pixels.
namespace tavro::device_check::pictures {

/// Text of the bytes `bytes`.
template <std::size_t Size>
std::string bytes(const char (&text)[Size]) {
    return std::string(text, Size - 1);
}

/// BMP, 2 x 2 pixels of 24 bits: a chequer of black and white.
inline std::string bmp() {
    return bytes("BM\x46\0\0\0\0\0\0\0\x36\0\0\0")                               // file header
           + bytes("\x28\0\0\0\2\0\0\0\2\0\0\0\1\0\x18\0\0\0\0\0\x10\0\0\0")     // picture header
           + bytes("\x13\x0b\0\0\x13\x0b\0\0\0\0\0\0\0\0\0\0")                   // ... 72 dpi
           + bytes("\0\0\0\xff\xff\xff\0\0") + bytes("\xff\xff\xff\0\0\0\0\0");  // two rows
}

/// PNG, 2 x 2 grey pixels of 8 bits: the same. Its check sums and packed rows are zlib's.
inline std::string png() {
    return bytes("\x89PNG\r\n\x1a\n") +
           bytes("\0\0\0\x0dIHDR\0\0\0\2\0\0\0\2\x08\0\0\0\0\x57\xdd\x52\xf8") +
           bytes("\0\0\0\x0cIDAT\x78\xda\x63\x60\xf8\x0f\x84\0\x06\0\1\xff\xad\x2c\x37\x25") +
           bytes("\0\0\0\0IEND\xae\x42\x60\x82");
}

/// JPEG, 8 x 8 grey pixels, all of middle grey: Huffman tables of one code each, and two zero bits.
inline std::string jpeg() {
    const std::string oneCode = bytes("\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0");
    return bytes("\xff\xd8") + bytes("\xff\xe0\0\x10JFIF\0\1\1\0\0\1\0\1\0\0") +
           bytes("\xff\xdb\0\x43\0") + std::string(64, '\x10') +           // quantisation
           bytes("\xff\xc0\0\x0b\x08\0\x08\0\x08\1\1\x11\0") +             // one component
           bytes("\xff\xc4\0\x14\0") + oneCode +                           // means
           bytes("\xff\xc4\0\x14\x10") + oneCode +                         // details
           bytes("\xff\xda\0\x08\1\1\0\0\x3f\0") + bytes("\x3f\xff\xd9");  // scan, end
}

}  // namespace tavro::device_check::pictures
