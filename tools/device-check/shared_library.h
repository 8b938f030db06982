#pragma once

#include <string>

#include "device-check/check.h"

// The program is linked to none of the libraries that it checks: then it starts on a device that
// lacks one of them, and says so in the loader's words.

namespace tavro::device_check {

inline constexpr const char* lectern_library = "liblectern.so";
inline constexpr const char* core_utils_library = "libcore_utils.so";
inline constexpr const char* curl_library = "libcurl.so.4";
inline constexpr const char* expat_library = "libexpat.so.1";
inline constexpr const char* tavro_library = "libtavro.so";

/// When a function that a library lacks counts: as soon as it is loaded, or when it is called.
enum class Binding { AtOnce, Lazy };

/// Loads the library `name`, found as a program's own libraries are.
void load(const char* name, Binding binding = Binding::Lazy);

/// Loads it for a check of something else, which is skipped when that is impossible.
void need(const char* name);

/// The address of `name`, to which the loader would bind a program; null if no library has it.
void* addressOf(const char* name);

/// The function or variable `name` of `library`, which the check needs.
template <typename Symbol>
Symbol* symbol(const char* library, const char* name) {
    need(library);
    void* const address = addressOf(name);
    expect(address != nullptr, std::string(library) + " has no " + name);
    return reinterpret_cast<Symbol*>(address);
}

/// The same in the platform's user interface library.
template <typename Symbol>
Symbol* lectern(const char* name) {
    return symbol<Symbol>(lectern_library, name);
}

}  // namespace tavro::device_check
