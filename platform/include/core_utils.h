/// @file
/// The device's common utilities, libcore_utils.so: what the project calls of them.
///
/// On a device the device's own library supplies these; on every other machine the stand-in under
/// platform/host does.
#pragma once

#include <istream>
#include <string>
#include <vector>

extern "C" {

/// Writes one log line, printf-style.
///
/// @param level 1 for an error, 4 for a trace.
/// @param file source file that logs.
/// @param line number in that file.
/// @param function signature of the function that logs.
/// @param format printf format of the message; its values follow.
void fl_print_log2(int level, const char* file, int line, const char* function, const char* format,
                   ...) __attribute__((format(printf, 5, 6)));

/// This process's ID.
extern int g_process_pid;
}

namespace folium::utilities {

/// The platform's serialised form of a vector of strings: a count as an unsigned 32-bit
/// little-endian integer, then for each string its length (the same kind of integer) and bytes.
class SerializationUtils {
public:
    /// Reads one vector.
    ///
    /// @param in stream at the start of the vector; left behind its end.
    /// @param out replaced by the strings.
    /// @return false, with `out` empty, when the stream is cut short or malformed.
    static bool DeserializeStringVec(std::istream& in, std::vector<std::string>& out);
};

}  // namespace folium::utilities
