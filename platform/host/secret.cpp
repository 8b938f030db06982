#include "secret.h"

#include <cstdint>
#include <random>

#include "little_endian.h"

// Concealed form: salt, then check sum and secret under a key stream that the salt selects.

namespace {

constexpr std::size_t word_size = sizeof(std::uint64_t);

/// Word number `index` of the key stream of `salt`, which is SplitMix64.
std::uint64_t keyWord(std::uint64_t salt, std::size_t index) {
    std::uint64_t word = salt + (index + 1) * 0x9e3779b97f4a7c15;
    word = (word ^ (word >> 30)) * 0xbf58476d1ce4e5b9;
    word = (word ^ (word >> 27)) * 0x94d049bb133111eb;
    return word ^ (word >> 31);
}

/// Combines `bytes` with the key stream of `salt`; a second time restores them.
std::string combined(std::uint64_t salt, std::string bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::uint64_t key = keyWord(salt, i / word_size) >> (8 * (i % word_size));
        bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(key));
    }
    return bytes;
}

/// The 64-bit FNV-1a hash of `secret`, with `salt` in its beginning. Every step is reversible, so
/// no single changed byte goes unnoticed.
std::string checkSum(std::uint64_t salt, std::string_view secret) {
    std::uint64_t state = salt ^ 0xcbf29ce484222325;
    for (const char byte : secret)
        state = (state ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    return toLittleEndian(state);
}

}  // namespace

std::string conceal(std::string_view secret) {
    std::random_device random;
    const std::uint64_t salt = (std::uint64_t{random()} << 32) | random();
    return toLittleEndian(salt) + combined(salt, checkSum(salt, secret).append(secret));
}

std::optional<std::string> reveal(std::string_view concealed) {
    if (concealed.size() < 2 * word_size)
        return std::nullopt;
    const auto salt = fromLittleEndian<std::uint64_t>(concealed.data());
    const std::string plain = combined(salt, std::string(concealed.substr(word_size)));
    const std::string secret = plain.substr(word_size);
    if (plain.compare(0, word_size, checkSum(salt, secret)) != 0)
        return std::nullopt;
    return secret;
}
