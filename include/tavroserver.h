#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bookdescription.h"
#include "curlmanager.h"
#include "xmlparser.h"

/// The service's device API: one function for each request, and the values of the last answers.
///
/// Every request blocks the calling thread until the answer is there. Requests return 0 for
/// success and 1 for failure (`syncWithCloud` and `getShopInfo` say what they call success) and
/// leave the service's result code in `lastError` and its explanation in `lastMessage`; both are
/// empty when no readable answer came. Values go into a request as they are, without XML escaping,
/// and a request body longer than 2047 bytes is sent cut there. One object serves one request at a
/// time and is used by one thread; the class-wide settings are written by
/// `LoadServerConnectionData` only. No lock is taken.
class [[gnu::visibility("default")]] TavroServer {
public:
    /// @name Connection settings, shared by all objects
    /// They hold the built-in values until the first object on a device with partner code 12 or 16
    /// is made.
    /// @{
    static std::string defaultshopName;  ///< shop name where the service gives none
    static std::string baseApiUrl;       ///< device API; method names are appended directly
    static std::string uploadUrl;        ///< content upload page
    static std::string downloadUrl;      ///< content download page
    static std::string shopID;           ///< shop sent at registration
    static int apiPort;                  ///< TCP port of `baseApiUrl`
    static int uploadPort;               ///< TCP port of `uploadUrl`
    static int downloadPort;             ///< TCP port of `downloadUrl`
    /// @}

    /// @name Request bodies
    /// As printf formats; each "%s" is one value. The service spells the element names so.
    /// @{
    static const char* const registerDeviceRequest;  ///< of `RegisterDevice`
    static const char* const createAccountRequest;   ///< of `CreateUser`
    static const char* const loginUserRequest;       ///< of `loginUser`
    static const char* const forgetPasswordRequest;  ///< of `forgetPassword`
    static const char* const syncWithCloudRequest;   ///< of `syncWithCloud`
    static const char* const getShopUrlRequest;      ///< of `getShopInfo`
    /// @}

    /// Makes the service object of a device and loads the connection settings. Sends nothing.
    ///
    /// @param deviceId identifier (serial number) of the device.
    explicit TavroServer(const std::string& deviceId);

    /// Frees the connection and the parser; sends nothing.
    virtual ~TavroServer();
    TavroServer(const TavroServer&) = delete;
    TavroServer& operator=(const TavroServer&) = delete;

    /// Loads the class-wide settings from the device's server-settings file, with the defaults of
    /// the device's partner code. Changes nothing when the device has another partner code than 12
    /// or 16 or the file cannot be opened.
    void LoadServerConnectionData();

    /// Registers the device and keeps the device token in `token`.
    ///
    /// @param consumerID the service consumer's identifier, as in the account configuration.
    /// @param consumerPassword the password that goes with it.
    /// @param deviceType type of the device.
    /// @return 0 when the service answered with code "1003" and a token, otherwise 1.
    int RegisterDevice(const std::string& consumerID, const std::string& consumerPassword,
                       const std::string& deviceType);

    /// Opens an account.
    ///
    /// @param email address of the account.
    /// @param firstName of the reader.
    /// @param lastName of the reader.
    /// @param password the new account's password.
    /// @return 0 when the service answered with code "1003", otherwise 1.
    int CreateUser(const std::string& email, const std::string& firstName,
                   const std::string& lastName, const std::string& password);

    /// Starts a session and fills `sessionId`, `vendorToken` and `vendorId`.
    ///
    /// @param email address of the account.
    /// @param password of the account.
    /// @return 0 when the service answered with code "1003" and a session, otherwise 1.
    int loginUser(const std::string& email, const std::string& password);

    /// Asks the service to send a password reminder.
    ///
    /// @param email address of the account.
    /// @return 0 when the service answered with code "1014" (this request's success), otherwise 1.
    int forgetPassword(const std::string& email);

    /// Fetches the shop's address, id, name and terms into `shopUrl`, `shopId`, `shopName`,
    /// `termsOfServiceUrl` and `termsOfServiceText`. Where the service sends the text of the terms,
    /// both terms members hold the text and the link is lost.
    ///
    /// @param consumerID the service consumer's identifier, as in the account configuration.
    /// @param consumerPassword the password that goes with it.
    /// @param deviceType type of the device.
    /// @return 0 when the answer is empty, carries code "1003", or lacks the address, the name or
    ///     either terms value; 1 when it cannot be read, or is complete without code "1003".
    int getShopInfo(const std::string& consumerID, const std::string& consumerPassword,
                    const std::string& deviceType);

    /// Fetches the catalogue: `getAddedBooks`, `getDeletedBooks` and `serverTime`.
    ///
    /// @param lastSyncTime time of the last sync as text, "0" for the whole catalogue.
    /// @return 0 when a readable answer came, whatever its code in `lastError` says, otherwise 1.
    int syncWithCloud(const std::string& lastSyncTime);

    /// Fetches the file of an item, under the name that the service announces plus ".downloading".
    /// `lastError` and `lastMessage` stay as they were.
    ///
    /// @param itemId the service's item identifier.
    /// @param destination folder to write into, without a trailing "/".
    /// @return the announced name, empty on failure. Valid until the next download.
    const std::string& downloadContent(const std::string& itemId, const std::string& destination);

    /// Sends a file as the new content of an item.
    ///
    /// @param itemId the service's item identifier.
    /// @param filePath the file.
    /// @return 0 when the service answered with code "1003", otherwise 1.
    int uploadContent(const std::string& itemId, const std::string& filePath);

    /// @return the books to be present on the device, as of the last parsed answer. Valid until
    ///     the next request of this object.
    const std::vector<BookDescription>& getAddedBooks() const;

    /// @return the books to be removed from the device; otherwise as `getAddedBooks`.
    const std::vector<BookDescription>& getDeletedBooks() const;

    /// @return raw bytes of the last answer, not zero-terminated. Valid until the next request of
    ///     this object.
    const std::vector<char>& getLastXMLAnswer() const;

private:
    std::unique_ptr<folium::tavro::CurlManager> curlManager;
    std::unique_ptr<XMLParser> parser;

public:
    /// @name Values of the last answers
    /// Each keeps its value until a request that sets it starts.
    /// @{
    std::string lastMessage;         ///< explanation of the result
    std::string lastError;           ///< result code
    std::string deviceId;            ///< the device's identifier, as constructed
    std::string token;               ///< device token, sent with every later request
    std::string sessionId;           ///< session of the last login
    std::string vendorToken;         ///< from the login
    std::string vendorId;            ///< from the login
    std::string serverTime;          ///< the service's clock at the last catalogue
    std::string shopUrl;             ///< the shop's address
    std::string shopId;              ///< the shop's identifier
    std::string termsOfServiceUrl;   ///< link to the terms, or their text
    std::string termsOfServiceText;  ///< text of the terms
    std::string shopName;            ///< the shop's name
    /// @}
};
