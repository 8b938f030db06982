#pragma once

#include <string>
#include <vector>

#include "account/account.h"
#include "console/output.h"

namespace tavro::tools {

/// What the command line said; each command reads its own part.
struct Arguments {
    std::string folder;                      ///< configuration folder
    bool json = false;                       ///< results as JSON
    bool trace = false;                      ///< show the library's own output
    Settings settings;                       ///< setup: values given, empty ones were not
    std::string service;                     ///< setup: address, may be empty
    bool renew = false;                      ///< register: anew
    bool passwordFromStandardInput = false;  ///< signup, login
    std::string email;                       ///< remind: may be empty
    std::vector<std::string> items;          ///< download
    bool all = false;                        ///< download
    std::string oldName;                     ///< replace
    std::string newPath;                     ///< replace
    bool upload = false;                     ///< replace
    bool background = false;                 ///< sync
    std::string file;                        ///< info, cover; status, may be empty
    std::string size = "300x400";            ///< cover: WxH
    std::string outputFile;                  ///< cover: may be empty
    bool ascii = false;                      ///< cover
    bool yes = false;                        ///< logout
};

// The commands. Each prints its results on `output` and throws Failure or UsageError when it could
// not do what was asked.

void setUp(const Arguments& arguments, const Output& output);
void registerCommand(const Arguments& arguments, const Output& output);
void signUp(const Arguments& arguments, const Output& output);
void logInCommand(const Arguments& arguments, const Output& output);
void remind(const Arguments& arguments, const Output& output);
void shop(const Arguments& arguments, const Output& output);
void status(const Arguments& arguments, const Output& output);
void fileStatus(const Arguments& arguments, const Output& output);
void info(const Arguments& arguments, const Output& output);
void cover(const Arguments& arguments, const Output& output);
void sync(const Arguments& arguments, const Output& output);
void syncInBackground(const Arguments& arguments, const Output& output);
void listBooks(const Arguments& arguments, const Output& output);
void download(const Arguments& arguments, const Output& output);
void showMap(const Arguments& arguments, const Output& output);
void replace(const Arguments& arguments, const Output& output);
void replay(const Arguments& arguments, const Output& output);
void showJournal(const Arguments& arguments, const Output& output);
void logOut(const Arguments& arguments, const Output& output);

/// Runs the login wizard, which takes the standard streams as they are: not for QuietLibrary.
void wizard(const Arguments& arguments, const Output& output);

// What several commands share.

/// The command that the account lacks on its way to a session; empty when it has one.
std::string missingStep(const Account& account);

/// The address of the device API, as the library has it now: "http://HOST:PORT".
std::string serviceUrl();

/// Sees that the configuration folder is the device's own, the only one that the library's fixed
/// paths lead to. Throws UsageError.
void requireDevicesFolder(const Arguments& arguments);

/// Whether a shell takes `text` as one word that means itself.
bool isPlainWord(const std::string& text);

}  // namespace tavro::tools
