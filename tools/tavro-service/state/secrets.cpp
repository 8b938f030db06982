#include "state/secrets.h"

#include <crypt.h>
#include <sys/random.h>

#include <array>
#include <cerrno>
#include <memory>
#include <system_error>

#include "text/text.h"

namespace tavro::service {

namespace {

/// Modest on purpose: a desktop's stand-in is to answer at once, also in tests.
constexpr unsigned long yescrypt_cost = 1;

std::string hashWith(const std::string& password, const std::string& setting) {
    const auto workspace = std::make_unique<crypt_data>();
    const char* const hash = ::crypt_r(password.c_str(), setting.c_str(), workspace.get());
    if (hash == nullptr || hash[0] == '*')
        throw std::system_error(errno, std::generic_category(), "hashing a password");
    return hash;
}

}  // namespace

std::string randomToken() {
    std::array<char, 16> bytes;
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw std::system_error(errno, std::generic_category(), "getrandom");
    return hexEncode({bytes.data(), bytes.size()});
}

std::string hashPassword(const std::string& password) {
    std::array<char, CRYPT_GENSALT_OUTPUT_SIZE> setting;
    if (::crypt_gensalt_rn("$y$", yescrypt_cost, nullptr, 0, setting.data(),
                           static_cast<int>(setting.size())) == nullptr)
        throw std::system_error(errno, std::generic_category(), "crypt_gensalt");
    return hashWith(password, setting.data());
}

bool isPassword(const std::string& password, const std::string& hash) {
    return hashWith(password, hash) == hash;
}

}  // namespace tavro::service
