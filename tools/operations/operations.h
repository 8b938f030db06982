#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "account.h"
#include "journal_backup.h"
#include "tavro.h"

namespace reader {

// What an application does with the library on behalf of an account: no printing, no prompting.
// All functions that ask the service block until it has answered; failures are thrown as Failure.

/// What an operation needs of the account beforehand.
enum class Need { Device, Session };

/// Opens a session of the library without a request. Throws when the account is not set up, the
/// device not registered, or (for Need::Session) nobody is logged in, saying what to do first.
std::unique_ptr<Tavro> openSession(const Account& account, Need need);

/// Registers the device and stores its token. With `renew`, registers a registered device anew;
/// the old token stays if that fails. @return false when it was registered already.
bool registerDevice(const Account& account, bool renew);

/// Why `text` cannot be sent to the service, into whose XML the device inserts it as it is; empty
/// when it can.
std::string whyUnsendable(const std::string& text);

/// Opens an account with the configured e-mail address and names.
void openAccount(const Account& account, const std::string& password);

/// Logs in and stores the session for later commands.
void logIn(const Account& account, const std::string& password);

/// Has the service send a password reminder to `email`.
void remindPassword(const Account& account, const std::string& email);

/// The shop as the service describes it.
struct Shop {
    std::string name;
    std::string url;
    std::string terms;  ///< a link or the text itself
};

/// Asks for the shop's details.
Shop askForShop(const Account& account);

/// Fetches and saves the catalogue. The saved one stays when the service refuses.
void synchronise(Tavro& session, const Account& account);

/// The book map: item by file name.
std::map<std::string, int> mappedFiles(const Account& account);

/// Whether the book file `name` lies in the download folder.
bool isPresent(const Account& account, const std::string& name);

/// Names of the mapped book files that lie in the download folder, by the item they belong to.
std::map<int, std::vector<std::string>> presentFiles(const Account& account);

/// The item ID of `book` as the book map has it; 0 where the text is no number.
int itemNumber(const BookDescription& book);

/// Downloads `book`. @return the file's name in the download folder, where it now lies.
std::string downloadBook(Tavro& session, const Account& account, const BookDescription& book);

/// Journals that the mapped file `oldName` was replaced by the file `newName` of the download
/// folder, after trying to upload that if `upload` is set, with the library's pauses.
/// @return the journalled change; its flag tells whether it was uploaded.
SyncJournal::Record replaceBook(Tavro& session, const Account& account, const std::string& oldName,
                                const std::string& newName, bool upload);

/// What a replay did with the changes that were pending.
struct ReplayResult {
    std::vector<SyncJournal::Record> uploaded;  ///< have reached the service, now or earlier
    std::vector<SyncJournal::Record> dropped;   ///< old name unknown to the book map
    std::vector<SyncJournal::Record> kept;      ///< still pending
};

/// Uploads the pending changes, with the library's pauses after failed attempts.
ReplayResult replayChanges(Tavro& session, const Account& account);

}  // namespace reader
