/// Faults as text and JSON. Promises: both are read or refused with an explanation, and with no
/// other exception; a fault that was read and written reads back as the same; JSON never makes the
/// service read a file.

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "faults/fault_syntax.h"
#include "require.h"

using namespace tavro::service;

namespace {

/// What `read` makes of its text; nothing when it refuses it.
std::optional<NamedFault> read(const std::function<NamedFault()>& read) {
    try {
        return read();
    } catch (const std::invalid_argument& error) {
        require(*error.what() != '\0', "a refusal says why");
        return std::nullopt;
    }
}

/// Whether all texts of `fault` are those that JSON can carry: bytes beyond ASCII may be no UTF-8.
bool isPlain(const Fault& fault) {
    const std::string texts = fault.resultCode.value_or("") + fault.fileName.value_or("");
    for (const char byte : texts) {
        if (static_cast<signed char>(byte) < 0)
            return false;
    }
    return true;
}

void requireRoundTrip(const NamedFault& named) {
    const std::string json = faultToJson(named);
    const NamedFault again = faultFromJson(json);
    require(faultToJson(again) == json && again.first == named.first, "a fault reads back as JSON");
    const Fault& one = named.second;
    const Fault& other = again.second;
    require(
        hasEffect(one) == hasEffect(other) && one.body == other.body && one.times == other.times,
        "a fault reads back whole");
    if (isPlain(one))
        require(one.resultCode == other.resultCode && one.fileName == other.fileName,
                "the texts of a fault read back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    // The command line may name a file, which is not to be tried here.
    if (text.find("body-file") == std::string::npos) {
        if (const auto fault = read([&] { return parseFault(text); }))
            requireRoundTrip(*fault);
    }
    if (const auto fault = read([&] { return faultFromJson(text); }))
        requireRoundTrip(*fault);
    const std::string withFile = R"({"operation":"LoginUser","body-file":"/dev/null"})";
    require(!read([&] { return faultFromJson(withFile); }), "JSON names no file");
    return 0;
}
