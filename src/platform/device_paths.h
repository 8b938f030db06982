/// The device's fixed paths, all in one place.
#pragma once

#include <string>

#include "device_root/device_root.h"
#include "platform/account_files.h"
#include "platform/constant_text.h"

namespace device_paths {

/// The paths below the device's root, and how it is put before them.
namespace below_root {

inline constexpr char folder[] = "/mnt/ext1/system/config/tavro";
inline constexpr auto configuration = platform::joined(folder, "/", account_files::configuration);
inline constexpr auto login_marker = platform::joined(folder, "/", account_files::login_marker);
inline constexpr auto download_list = platform::joined(folder, "/", account_files::download_list);
inline constexpr auto covers = platform::joined(folder, "/", account_files::covers);

/// The whole path of what `below` returns: on a device that itself, a constant; elsewhere made once
/// for each function `Below`, when the root is known.
template <typename Below>
const char* path(Below below) {
    if constexpr (device_root::is_fixed) {
        return below();
    } else {
        static const std::string whole = device_root::root() + below();
        return whole.c_str();
    }
}

}  // namespace below_root

/// Folder of the account configuration.
inline const char* configurationFolder() {
    return below_root::path([] { return below_root::folder; });
}

/// Account configuration.
inline const char* accountConfiguration() {
    return below_root::path([] { return below_root::configuration.data(); });
}

/// Login marker: logged in when it is not empty.
inline const char* loginMarker() {
    return below_root::path([] { return below_root::login_marker.data(); });
}

/// Files still to be downloaded; also the lock of that list.
inline const char* downloadList() {
    return below_root::path([] { return below_root::download_list.data(); });
}

/// Folder of the cover images.
inline const char* coverFolder() {
    return below_root::path([] { return below_root::covers.data(); });
}

/// Device-wide settings of the connection to the service.
inline const char* serverSettings() {
    return below_root::path([] { return "/mnt/ext1/system/config/server_connection_data.cfg"; });
}

/// Hidden files that go with the account.
inline const char* hiddenFilesFolder() {
    return below_root::path([] { return "/mnt/ext1/.adobe-hidden-files"; });
}

/// Folder of the applications that the device's programs start.
inline const char* applicationFolder() {
    return below_root::path([] { return "/ebrmain/bin"; });
}

/// Background synchronisation application.
inline const char* syncApplication() {
    return below_root::path([] { return "/ebrmain/bin/tavro_sync.app"; });
}

/// Login wizard.
inline const char* wizardApplication() {
    return below_root::path([] { return "/ebrmain/bin/tavro_wizard.app"; });
}

/// The argument that the login wizard is started with.
inline constexpr const char* wizard_argument = "-library";

}  // namespace device_paths
