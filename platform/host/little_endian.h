#pragma once

#include <cstddef>
#include <string>

/// The bytes of the unsigned `number`, least significant first.
template <typename Unsigned>
std::string toLittleEndian(Unsigned number) {
    std::string bytes;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i)
        bytes += static_cast<char>(static_cast<unsigned char>(number >> (8 * i)));
    return bytes;
}

/// The number that `toLittleEndian` turned into the bytes at `bytes`.
template <typename Unsigned>
Unsigned fromLittleEndian(const char* bytes) {
    Unsigned number = 0;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i)
        number = static_cast<Unsigned>(
            number | static_cast<Unsigned>(static_cast<unsigned char>(bytes[i])) << (8 * i));
    return number;
}
