#pragma once

#include <cstdint>
#include <string_view>

/// Offset basis and prime of the 64-bit FNV-1a hash.
constexpr std::uint64_t fnv_offset_basis = 0xcbf29ce484222325;
constexpr std::uint64_t fnv_prime = 0x100000001b3;

/// `state` after `bytes` in the manner of FNV-1a. With an odd `multiplier` every step is
/// reversible, so texts that differ in a single byte never end in the same state.
inline std::uint64_t absorb(std::uint64_t state, std::uint64_t multiplier, std::string_view bytes) {
    for (const char byte : bytes)
        state = (state ^ static_cast<unsigned char>(byte)) * multiplier;
    return state;
}

/// Spreads each bit of `state` over all bits, reversibly (the final step of SplitMix64).
inline std::uint64_t spread(std::uint64_t state) {
    state = (state ^ (state >> 30)) * 0xbf58476d1ce4e5b9;
    state = (state ^ (state >> 27)) * 0x94d049bb133111eb;
    return state ^ (state >> 31);
}
