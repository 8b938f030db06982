/// The serialised form of a vector of strings. Promises: bytes of any kind are read or refused with
/// nothing left behind; what was read is written as the very bytes that it was read from.

#include <sstream>

#include "core_utils.h"
#include "core_utils_host.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::istringstream in(bytes);
    std::vector<std::string> strings = {"left over"};
    if (!folium::utilities::SerializationUtils::DeserializeStringVec(in, strings)) {
        require(strings.empty(), "what is refused leaves nothing");
        return 0;
    }
    std::ostringstream out;
    require(folium::utilities::SerializeStringVec(out, strings), "strings can be written");
    const std::string written = out.str();
    require(bytes.compare(0, written.size(), written) == 0, "what was read is written alike");
    return 0;
}
