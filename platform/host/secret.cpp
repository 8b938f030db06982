#include "secret.h"

#include <cstdint>
#include <random>

#include "hash.h"
#include "little_endian.h"

// Concealed form: salt, then check sum and secret under a key stream that the salt selects.

namespace {

constexpr std::size_t word_size = sizeof(std::uint64_t);
constexpr std::uint64_t stream_step = 0x9e3779b97f4a7c15;

std::uint64_t randomWord() {
    std::random_device device;
    return (std::uint64_t{device()} << 32) | device();
}

/// Combines `bytes` with the key stream of `salt`; a second time restores them.
std::string combined(std::uint64_t salt, std::string_view bytes) {
    std::string result;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::uint64_t word = spread(salt + (i / word_size + 1) * stream_step);
        result += static_cast<char>(bytes[i] ^ static_cast<char>(word >> (8 * (i % word_size))));
    }
    return result;
}

std::string checkSum(std::uint64_t salt, std::string_view secret) {
    return toLittleEndian(absorb(salt ^ fnv_offset_basis, fnv_prime, secret));
}

}  // namespace

std::string conceal(std::string_view secret) {
    const std::uint64_t salt = randomWord();
    return toLittleEndian(salt) + combined(salt, checkSum(salt, secret).append(secret));
}

std::optional<std::string> reveal(std::string_view concealed) {
    if (concealed.size() < 2 * word_size)
        return std::nullopt;
    const auto salt = fromLittleEndian<std::uint64_t>(concealed.data());
    const std::string plain = combined(salt, concealed.substr(word_size));
    const std::string secret = plain.substr(word_size);
    if (plain.compare(0, word_size, checkSum(salt, secret)) != 0)
        return std::nullopt;
    return secret;
}
