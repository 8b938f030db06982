// The serialised form of a vector of strings, read and written.

#include <cstdint>
#include <limits>
#include <optional>

#include "core_utils.h"
#include "core_utils_host.h"
#include "little_endian.h"

namespace {

using Length = std::uint32_t;

std::optional<Length> readLength(std::istream& in) {
    char bytes[sizeof(Length)];
    if (!in.read(bytes, sizeof bytes))
        return std::nullopt;
    return fromLittleEndian<Length>(bytes);
}

/// Reads byte by byte, so that memory follows what the stream holds and not what it announces.
std::optional<std::string> readString(std::istream& in) {
    const std::optional<Length> length = readLength(in);
    std::string text;
    for (char byte = 0; length && text.size() < *length; text += byte) {
        if (!in.get(byte))
            return std::nullopt;
    }
    return length ? std::optional(std::move(text)) : std::nullopt;
}

bool writeLength(std::ostream& out, std::size_t length) {
    if (length > std::numeric_limits<Length>::max())
        return false;
    return static_cast<bool>(out << toLittleEndian(static_cast<Length>(length)));
}

}  // namespace

namespace folium::utilities {

bool SerializationUtils::DeserializeStringVec(std::istream& in, std::vector<std::string>& out) {
    out.clear();
    const std::optional<Length> count = readLength(in);
    std::vector<std::string> strings;
    while (count && strings.size() < *count) {
        std::optional<std::string> text = readString(in);
        if (!text)
            return false;
        strings.push_back(std::move(*text));
    }
    out.swap(strings);
    return count.has_value();
}

bool SerializeStringVec(std::ostream& out, const std::vector<std::string>& strings) {
    bool written = writeLength(out, strings.size());
    for (const std::string& text : strings)
        written = written && writeLength(out, text.size()) && out << text;
    return written;
}

}  // namespace folium::utilities
