#pragma once

/// Keys of the account configuration.
namespace account_keys {

inline constexpr const char* serial_number = "SerialNumber";
inline constexpr const char* consumer_id = "ConsumerID";
inline constexpr const char* consumer_password = "ConsumerPassword";
inline constexpr const char* device_type = "DeviceType";
inline constexpr const char* email = "Email";
inline constexpr const char* first_name = "FirstName";
inline constexpr const char* last_name = "LastName";
inline constexpr const char* download_folder = "DownloadFolderPath";
inline constexpr const char* session = "sessionID";

/// Those without a value of which there is no session.
inline constexpr const char* required[] = {serial_number, consumer_id, consumer_password,
                                           device_type, download_folder};

inline constexpr const char* all[] = {serial_number, consumer_id,     consumer_password,
                                      device_type,   email,           first_name,
                                      last_name,     download_folder, session};

}  // namespace account_keys
