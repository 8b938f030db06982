#pragma once

#include <map>
#include <string>

#include "device-check/check.h"

// The program is linked to none of the libraries that it checks: then it starts on a device that
// lacks one of them, and says so in the loader's words.

namespace tavro::device_check {

inline constexpr const char* lectern_library = "liblectern.so";
inline constexpr const char* core_utils_library = "libcore_utils.so";
inline constexpr const char* tavro_library = "libtavro.so";

/// Loads the library `name`, found as a program's own libraries are, with all functions that it
/// needs if `complete`; otherwise those that are called.
void load(const char* name, bool complete = false);

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

/// The function `name` of the platform's user interface library.
#define LECTERN(name) symbol<decltype(name)>(lectern_library, #name)

// What can only be called from C++ lies in a library of its own, which is linked to libtavro and
// the platform as any application is.

inline constexpr const char* module_library = "libtavro-device-check.so";

/// The checks in it by their names.
using ModuleChecks = std::map<std::string, std::string (*)(Context& context)>;
extern "C" [[gnu::visibility("default")]] const ModuleChecks tavro_device_checks;

/// What runs the check called `name` there.
std::function<std::string(Context& context)> inModule(const char* name);

}  // namespace tavro::device_check
