#pragma once

/// Connection settings of a device that has none of its own.
namespace built_in {

inline constexpr const char* shop_name = "Zabrin";
inline constexpr const char* base_api_url = "http://api.tavro.example/IOSCloudManagement.svc/";
inline constexpr const char* upload_url = "http://www.tavro.example/UploadContent.aspx";
inline constexpr const char* download_url = "http://www.tavro.example/DownloadContent.aspx";
inline constexpr const char* shop_id = "C07D3A95-61E2-4B7A-9F14-8A2E5D0C6B41";
inline constexpr int api_port = 80;
inline constexpr int content_port = 1510;

}  // namespace built_in
