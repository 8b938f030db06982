#include <core_utils.h>
#include <curl/curl.h>
#include <dlfcn.h>
#include <expat.h>
#include <lectern.h>

#include "device-check/shared_library.h"
#include "tavro_entry_points.h"

#ifdef __arm__
// The names that these calls have in every C library of 32-bit ARM, old ones included.
__asm__(".symver dlopen, dlopen@GLIBC_2.4");
__asm__(".symver dlsym, dlsym@GLIBC_2.4");
__asm__(".symver dlerror, dlerror@GLIBC_2.4");
#endif

namespace tavro::device_check {

void load(const char* name, bool complete) {
    if (::dlopen(name, (complete ? RTLD_NOW : RTLD_LAZY) | RTLD_GLOBAL) == nullptr)
        throw std::runtime_error(::dlerror());
}

void need(const char* name) {
    if (::dlopen(name, RTLD_LAZY | RTLD_GLOBAL) == nullptr)
        throw Skipped(std::string(name) + " does not load");
}

void* addressOf(const char* name) {
    return ::dlsym(RTLD_DEFAULT, name);
}

std::function<std::string(Context& context)> inModule(const char* name) {
    return [name](Context& context) {
        // libtavro.so does not say where the platform's libraries lie; it tells if one is missing.
        for (const char* library : {lectern_library, core_utils_library})
            ::dlopen(library, RTLD_LAZY | RTLD_GLOBAL);
        need(tavro_library);
        load(module_library);
        return symbol<const ModuleChecks>(module_library, "tavro_device_checks")->at(name)(context);
    };
}

namespace {

/// Loads `library` and looks for everything that libtavro takes from it.
std::string hasAll(const char* library, const std::vector<const char*>& names) {
    load(library);
    std::string missing;
    for (const char* name : names)
        if (addressOf(name) == nullptr)
            missing += std::string(" ") + name;
    expect(missing.empty(), "lacks" + missing);
    return "has all " + std::to_string(names.size()) + " names by which C finds them";
}

std::string checkLectern(Context&) {
    return hasAll(
        lectern_library,
        {"OpenConfig", "ReadString", "ReadInt", "ReadSecret", "WriteSecret", "CloseConfig",
         "CloseConfigNoSave", "GetCustomizedPartner", "InitLectern", "FastBookHash", "OpenBook",
         "SendEventTo", "LoadJPEG", "LoadPNGStretch", "LoadBitmap"});
}

std::string checkCoreUtils(Context&) {
    return hasAll(core_utils_library, {"fl_print_log2", "g_process_pid"});
}

std::string checkCurl(Context&) {
    constexpr const char* library = "libcurl.so.4";
    load(library);
    const auto* const curl =
        symbol<decltype(curl_version_info)>(library, "curl_version_info")(CURLVERSION_NOW);
    for (const char* const* protocol = curl->protocols; *protocol != nullptr; ++protocol)
        if (std::string(*protocol) == "http")
            return std::string(curl->version) + ", speaks http";
    throw std::runtime_error(std::string(curl->version) + " does not speak http");
}

std::string checkExpat(Context&) {
    constexpr const char* library = "libexpat.so.1";
    load(library);
    return symbol<decltype(XML_ExpatVersion)>(library, "XML_ExpatVersion")();
}

/// Makes calls that touch no file.
std::string checkTavro(Context&) {
    need(lectern_library);
    need(core_utils_library);
    load(tavro_library, true);
#define TAVRO(name) symbol<decltype(name)>(tavro_library, #name)
    expect(TAVRO(tavro_get_book_status)("/no placeholder") == 0,
           "tavro_get_book_status takes any file for a placeholder");
    expect(TAVRO(tavro_get_book_info)(nullptr, nullptr) == -1,
           "tavro_get_book_info describes no book");
    expect(TAVRO(tavro_get_book_cover)(nullptr, 1, 1) == nullptr,
           "tavro_get_book_cover has a cover of no book");
    return "loads, and its three C functions answer";
}

}  // namespace

std::vector<Check> libraryChecks() {
    const char* const path =
        "set LD_LIBRARY_PATH to the folders of the device's libraries and of libtavro.so";
    return {{lectern_library, "libtavro.so does not load", path, checkLectern},
            {core_utils_library, "libtavro.so does not load", path, checkCoreUtils},
            {"libcurl", "nothing reaches the service", "install libcurl.so.4 with http", checkCurl},
            {"Expat", "no answer of the service is read", "install libexpat.so.1", checkExpat},
            {tavro_library, "no application or browser that uses it starts",
             "build it for this device's C library, and against its own platform libraries",
             checkTavro},
            {"layout", "programs built elsewhere read other members than they mean to",
             "build everything with one C++ ABI, that of the device", inModule("layout")}};
}

std::vector<Check> serviceChecks() {
    constexpr int seconds = 120;  // the library's own limit of a request is 60
    return {
        {"registration", "the service does not know the device",
         "see the server settings and the keys of .tavro.conf", inModule("registration"), seconds},
        {"log-in", "there is no session", "see Email in .tavro.conf, and the password",
         inModule("log-in"), seconds},
        {"catalogue", "no books are known", "log in anew", inModule("catalogue"), seconds},
        {"download", "no book comes", "see downloadUrl and downloadPort of the server settings",
         inModule("download"), seconds}};
}

}  // namespace tavro::device_check
