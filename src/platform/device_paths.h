/// The device's fixed paths, all in one place.
#pragma once

#include <iterator>
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
inline constexpr char server_settings[] = "/mnt/ext1/system/config/server_connection_data.cfg";
inline constexpr char hidden_files[] = "/mnt/ext1/.adobe-hidden-files";
inline constexpr char applications[] = "/ebrmain/bin";
inline constexpr auto sync_application = platform::joined(applications, "/tavro_sync.app");
inline constexpr auto wizard_application = platform::joined(applications, "/tavro_wizard.app");

/// The whole path of `Below` where the root is known only when the program runs.
template <const auto& Below>
const char* chosenPath() {
    static const std::string path = device_root::root() + std::data(Below);
    return path.c_str();
}

/// The whole path of `Below`: on a device a constant.
template <const auto& Below>
constexpr const char* path() {
    if constexpr (device_root::is_fixed)
        return std::data(Below);
    else
        return chosenPath<Below>();
}

}  // namespace below_root

/// Folder of the account configuration.
inline const char* configurationFolder() {
    return below_root::path<below_root::folder>();
}

/// Account configuration.
inline const char* accountConfiguration() {
    return below_root::path<below_root::configuration>();
}

/// Login marker: logged in when it is not empty.
inline const char* loginMarker() {
    return below_root::path<below_root::login_marker>();
}

/// Files still to be downloaded; also the lock of that list.
inline const char* downloadList() {
    return below_root::path<below_root::download_list>();
}

/// Folder of the cover images.
inline const char* coverFolder() {
    return below_root::path<below_root::covers>();
}

/// Device-wide settings of the connection to the service.
inline const char* serverSettings() {
    return below_root::path<below_root::server_settings>();
}

/// Hidden files that go with the account.
inline const char* hiddenFilesFolder() {
    return below_root::path<below_root::hidden_files>();
}

/// Folder of the applications that the device's programs start.
inline const char* applicationFolder() {
    return below_root::path<below_root::applications>();
}

/// Background synchronisation application.
inline const char* syncApplication() {
    return below_root::path<below_root::sync_application>();
}

/// Login wizard.
inline const char* wizardApplication() {
    return below_root::path<below_root::wizard_application>();
}

}  // namespace device_paths
