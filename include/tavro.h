#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bookdescription.h"
#include "bookmap.h"
#include "tavroserver.h"
#include "xmlparser.h"

/// A session with the service: what an application creates to register the device, log in, fetch
/// the catalogue, download books and upload changes.
///
/// State between processes lives in the files of the configuration folder given to `init`. Account
/// operations need the device token that `init` finds or obtains; the operations on books need a
/// session ID as well, from the configuration or from `login`. An operation whose need is not met
/// returns its failure value at once, without touching a file or sending anything. Network
/// operations block the calling thread. An object is used by one thread at a time.
class [[gnu::visibility("default")]] Tavro {
public:
    /// @name Names of the files in the configuration folder
    /// @{
    static const char* const config_file;     ///< account configuration, never written here
    static const char* const token_file;      ///< device token, raw bytes
    static const char* const tavro_password;  ///< password store
    static const char* const list_file;       ///< book map
    static const char* const tavro_books;     ///< last catalogue answer, raw bytes
    static const char* const journal_file;    ///< sync journal
    /// @}

    /// Starts up the platform library for this process.
    Tavro();

    /// Frees the session. Sends nothing and writes no file.
    ~Tavro();
    Tavro(const Tavro&) = delete;
    Tavro& operator=(const Tavro&) = delete;

    /// Reads the account configuration, makes the service object, and takes the device token from
    /// the configuration folder, registering the device (one blocking request) only if no token is
    /// stored there.
    ///
    /// @param configDir the configuration folder, without a trailing "/"; must exist and be
    ///     writable.
    /// @return true when the session has a device token; false when the configuration cannot be
    ///     opened or is incomplete (there is no service object then, unless an earlier `init` made
    ///     one) or the registration failed (see `lastError`).
    bool init(const std::string& configDir);

    /// Reads the account configuration into this object.
    ///
    /// @param configDir the configuration folder, without a trailing "/".
    /// @return true when it holds a serial number, consumer ID, consumer password, device type and
    ///     download folder; nothing has changed if the file could not be opened.
    bool readConfig(const std::string& configDir);

    /// @name What the service has given
    /// Empty before `init`. A reference is valid as long as the session, and its text may change
    /// with the next request.
    /// @{

    /// @return the device token.
    const std::string& deviceToken() const;

    /// @return the session ID.
    const std::string& sessionID() const;

    /// @return the vendor token.
    const std::string& vendorToken() const;

    /// @return the vendor ID.
    const std::string& vendorID() const;
    /// @}

    /// @return the service's result code of the last request; empty before `init` and when no
    ///     readable answer came.
    std::string lastError() const;

    /// Fetches the shop's details for `getShopUrl`, `getShopName` and `getShopLicenseUrl`. Needs
    /// no device token.
    ///
    /// @param consumerID the service consumer's identifier, as in the account configuration.
    /// @param consumerPassword the password that goes with it.
    /// @param deviceType type of the device.
    /// @return whether `TavroServer::getShopInfo` returned 0; false before `init`.
    bool getShopInfo(const std::string& consumerID, const std::string& consumerPassword,
                     const std::string& deviceType);

    /// @return the shop's address; empty before `getShopInfo`.
    const std::string& getShopUrl() const;

    /// @return link to the shop's terms, or their text where the service sends it; empty before
    ///     `getShopInfo`.
    const std::string& getShopLicenseUrl() const;

    /// @return the shop's name, the configured default where the service gave none; empty before
    ///     `init`.
    const std::string& getShopName() const;

    /// Opens an account with the configured e-mail address and names. The password is stored in
    /// the password store whatever the service says. Needs a device token.
    ///
    /// @param password the new account's password.
    /// @return whether the service opened the account; `lastError` has its code.
    bool createUser(const std::string& password);

    /// Logs in with the configured e-mail address. Needs a device token. Writes "Can't login" to
    /// the standard error stream when the login fails.
    ///
    /// @param password an empty one stands for the stored one. The argument as given, even the
    ///     empty text, replaces the stored password.
    /// @return whether the session has a session ID now; false if the stored password was needed
    ///     and is empty too.
    bool login(const std::string& password);

    /// Asks the service to send a password reminder. Needs a device token. Writes "Can't forget
    /// password" to the standard error stream when that fails.
    ///
    /// @param email address of the account.
    /// @return whether the service sent it.
    bool forgetPassword(const std::string& email);

    /// Fetches the catalogue, writes the answer to the standard error stream and saves it. Needs a
    /// session.
    ///
    /// @return true when a readable answer was saved, even one that was cut or that refuses:
    ///     `lastError` has the service's code, "1003" for success.
    bool syncServer();

    /// Saves a catalogue answer byte for byte, replacing the saved one.
    ///
    /// @param data the answer.
    void writeXML(const std::vector<char>& data);

    /// Looks the user's books up: those of this object's last sync if there were any, otherwise
    /// those of the saved catalogue, which is parsed again only after it has changed.
    ///
    /// @return the books, empty when there is no catalogue. Valid until this object's next call of
    ///     this function, sync or upload; a download leaves it valid.
    const std::vector<BookDescription>& getAddedBooks() const;

    /// Reads the book map. Waits for its lock.
    ///
    /// @return item IDs by book file name (relative to the download folder).
    std::map<std::string, int> GetBooks();

    /// Reads the book map. Waits for its lock.
    ///
    /// @return book file names (relative to the download folder) by item ID.
    std::map<int, std::string> GetBooksIds();

    /// Downloads a book into the download folder under a name that no file there has, and records
    /// it in the book map before it gets that name. Needs a session. When the transfer fails, a
    /// file that already has the announced name is removed, and the partial file stays. A download
    /// brings no result code: `lastError` stays as the last request left it.
    ///
    /// @param book the book, of which the item ID counts.
    /// @return the file's name relative to the download folder, empty when nothing was downloaded.
    std::string downloadBook(const BookDescription& book);

    /// Journals that a book file of the download folder was replaced by another, after trying to
    /// upload that if asked to: 5 attempts, with a pause of 5 seconds after each that fails. Needs
    /// a session.
    ///
    /// @param oldPath the replaced file; only the part behind the last "/" counts.
    /// @param newPath the file that replaced it; likewise. Whether it exists is not looked at: a
    ///     change without its file is tried and paused for in every replay.
    /// @param upload whether to try the upload.
    /// @return true when the change was journalled, uploaded or not; false when the book map does
    ///     not know the old name.
    bool updateACSM(const std::string& oldPath, const std::string& newPath, bool upload);

    /// Replays the journal: see `syncJournal`. Needs a session.
    ///
    /// @return true when it ran.
    bool syncDownloadFolder();

    /// Uploads every journalled change, newest first, with attempts and pauses as in `updateACSM`;
    /// moves the book map's entry to the new name once a change has been uploaded, now or earlier;
    /// keeps in the journal what has never been uploaded, in the order in which it was taken, so
    /// that the next replay goes the other way; drops changes whose old name the book map does not
    /// know. Does nothing before `init`.
    void syncJournal();

private:
    std::string serialNumber;
    std::string consumerID;
    std::string consumerPassword;
    std::string deviceType;
    std::string email;
    std::string firstName;
    std::string lastName;
    std::string password;
    std::string downloadFolderPath;

public:
    /// The service object, null until `init`. Read it for what the session does not hand out, such
    /// as the service's explanation of a failure.
    std::unique_ptr<TavroServer> server;

private:
    std::unique_ptr<XMLParser> parser;
    std::string configDir;
    BookMap bookMap;
    mutable std::string booksFileHash;

    // Guards of the operations, and a path in the configuration folder.
    [[gnu::visibility("hidden")]] bool hasDevice() const;
    [[gnu::visibility("hidden")]] bool hasSession() const;
    [[gnu::visibility("hidden")]] std::string configPath(const char* name) const;
};
