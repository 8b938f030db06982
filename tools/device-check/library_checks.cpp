#include <core_utils.h>
#include <curl/curl.h>
#include <expat.h>
#include <lectern.h>

#include "device-check/module_checks.h"
#include "device-check/shared_library.h"
#include "tavro_entry_points.h"

namespace tavro::device_check {

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

std::string checkLectern(const Context&) {
    return hasAll(
        lectern_library,
        {"OpenConfig", "ReadString", "ReadInt", "ReadSecret", "WriteSecret", "CloseConfig",
         "CloseConfigNoSave", "GetCustomizedPartner", "InitLectern", "FastBookHash", "OpenBook",
         "SendEventTo", "LoadJPEG", "LoadPNGStretch", "LoadBitmap"});
}

std::string checkCoreUtils(const Context&) {
    return hasAll(core_utils_library, {"fl_print_log2", "g_process_pid"});
}

std::string checkCurl(const Context&) {
    load(curl_library);
    const curl_version_info_data* const curl =
        symbol<decltype(curl_version_info)>(curl_library, "curl_version_info")(CURLVERSION_NOW);
    for (const char* const* protocol = curl->protocols; *protocol != nullptr; ++protocol)
        if (std::string(*protocol) == "http")
            return std::string(curl->version) + ", speaks http";
    throw Wrong(std::string(curl->version) + " does not speak http");
}

std::string checkExpat(const Context&) {
    load(expat_library);
    return symbol<decltype(XML_ExpatVersion)>(expat_library, "XML_ExpatVersion")();
}

/// Loads libtavro with all functions that it needs, and makes calls that touch no file.
std::string checkTavro(const Context&) {
    need(lectern_library);
    need(core_utils_library);
    load(tavro_library, Binding::AtOnce);
    const auto status =
        symbol<decltype(tavro_get_book_status)>(tavro_library, "tavro_get_book_status");
    const auto info = symbol<decltype(tavro_get_book_info)>(tavro_library, "tavro_get_book_info");
    const auto cover =
        symbol<decltype(tavro_get_book_cover)>(tavro_library, "tavro_get_book_cover");
    expect(status("/no placeholder") == 0,
           "tavro_get_book_status takes any file for a placeholder");
    expect(info(nullptr, nullptr) == -1, "tavro_get_book_info describes no book");
    expect(cover(nullptr, 1, 1) == nullptr, "tavro_get_book_cover has a cover of no book");
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
             "build everything with one C++ ABI, that of the device", inModule(layout_check)}};
}

}  // namespace tavro::device_check
