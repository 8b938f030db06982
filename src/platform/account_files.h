#pragma once

/// Names of the account's files in the configuration folder: those of the library, and those that
/// the device's other programs keep for it.
namespace account_files {

inline constexpr char configuration[] = ".tavro.conf";         ///< account configuration
inline constexpr char token[] = ".tavro_token";                ///< device token, raw bytes
inline constexpr char password[] = ".tavro_shadow";            ///< password store
inline constexpr char book_map[] = ".tavro.lst";               ///< which file belongs to which item
inline constexpr char catalogue[] = ".tbooks.xml";             ///< last catalogue answer, raw bytes
inline constexpr char journal[] = ".tavro_journal";            ///< changes still to be sent
inline constexpr char login_marker[] = ".tavro_vendor_token";  ///< not empty: somebody is logged in
inline constexpr char download_list[] = ".files_to_download";  ///< list of missing files, its lock
inline constexpr char covers[] = "covers";                     ///< folder of the cover images

}  // namespace account_files
