#pragma once

#include "platform/constant_text.h"

/// Where the service's pages lie on its hosts.
namespace service_paths {

inline constexpr char device_api[] = "/IOSCloudManagement.svc/";  // method names follow directly
inline constexpr char upload[] = "/UploadContent.aspx";
inline constexpr char download[] = "/DownloadContent.aspx";

}  // namespace service_paths

/// Connection settings of a device that has none of its own.
namespace built_in {

namespace text {

inline constexpr auto api = platform::joined("http://api.tavro.example", service_paths::device_api);
inline constexpr auto upload = platform::joined("http://www.tavro.example", service_paths::upload);
inline constexpr auto download =
    platform::joined("http://www.tavro.example", service_paths::download);

}  // namespace text

inline constexpr const char* shop_name = "Zabrin";
inline constexpr const char* base_api_url = text::api.data();
inline constexpr const char* upload_url = text::upload.data();
inline constexpr const char* download_url = text::download.data();
inline constexpr const char* shop_id = "C07D3A95-61E2-4B7A-9F14-8A2E5D0C6B41";
inline constexpr int api_port = 80;
inline constexpr int content_port = 1510;

}  // namespace built_in
