#pragma once

/// Keys of the device-wide server-settings file.
namespace connection_keys {

inline constexpr const char* shop_name = "defaultshopName";
inline constexpr const char* base_api_url = "baseApiUrl";
inline constexpr const char* api_port = "apiPort";
inline constexpr const char* upload_url = "uploadUrl";
inline constexpr const char* upload_port = "uploadPort";
inline constexpr const char* download_url = "downloadUrl";
inline constexpr const char* download_port = "downloadPort";
inline constexpr const char* shop_id = "shopID";

}  // namespace connection_keys
