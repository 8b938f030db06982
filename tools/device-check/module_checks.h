#pragma once

#include "device-check/shared_library.h"

// What can only be called from C++ lies in a library of its own, libtavro-device-check.so, which is
// linked to libtavro and the platform as any application is.

namespace tavro::device_check {

inline constexpr const char* module_library = "libtavro-device-check.so";
inline constexpr const char* layout_check = "tavro_check_layout";
inline constexpr const char* string_list_check = "tavro_check_string_list";
inline constexpr const char* registration_check = "tavro_check_registration";
inline constexpr const char* login_check = "tavro_check_login";
inline constexpr const char* catalogue_check = "tavro_check_catalogue";
inline constexpr const char* download_check = "tavro_check_download";

/// A check in that library. Throws as checks do; `found` gets what it found.
using ModuleCheck = void(const Context& context, std::string& found);

/// What runs the check called `name` there.
inline auto inModule(const char* name) {
    return [name](const Context& context) {
        need(tavro_library);
        load(module_library);
        std::string found;
        symbol<ModuleCheck>(module_library, name)(context, found);
        return found;
    };
}

extern "C" {

/// Whether libtavro's classes lie in memory as its headers say.
[[gnu::visibility("default")]] ModuleCheck tavro_check_layout;

/// Whether the platform reads lists of strings.
[[gnu::visibility("default")]] ModuleCheck tavro_check_string_list;

/// Takes the stored device token or, where there is none, registers the device.
[[gnu::visibility("default")]] ModuleCheck tavro_check_registration;

/// Logs in with the given or the stored password.
[[gnu::visibility("default")]] ModuleCheck tavro_check_login;

/// Fetches the catalogue.
[[gnu::visibility("default")]] ModuleCheck tavro_check_catalogue;

/// Downloads the catalogue's first book into the context's folder.
[[gnu::visibility("default")]] ModuleCheck tavro_check_download;
}

}  // namespace tavro::device_check
