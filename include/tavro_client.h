#pragma once

#include <string>

/// What the device's own applications ask of the service's account: whether it is logged in, where
/// its books are, and to start the applications that work with it.
///
/// An object holds nothing: every call reads the stored files afresh. Each call but `GetProfile`
/// is noted in the system log. Used from the calling application's thread; no lock is taken but
/// the book map's, in `LogOut`.
class [[gnu::visibility("default")]] TavroClient {
public:
    /// Makes an object that holds nothing. Touches no file.
    TavroClient();

    /// Names the folder of the account; whether it is there is not checked.
    ///
    /// @return the configuration folder of the account, as `Tavro::init` takes it.
    std::string GetProfile();

    /// @return whether an account is logged in: its login marker exists and is not empty.
    bool IsLoggedIn() const;

    /// @return the folder of the downloaded books, as the account configuration has it; empty when
    ///     it has none or cannot be read.
    std::string GetSyncFolder();

    /// Starts the synchronisation application and returns at once. Nobody waits for the child.
    ///
    /// The child is a copy of this process until it becomes the application. When the application
    /// is missing it ends by `exit`, which writes buffered output of this process a second time:
    /// flush the standard streams before the call.
    ///
    /// @return always 0; an application that cannot be started is logged by the child, which ends
    ///     with status 127.
    int StartSync();

    /// Opens the login wizard.
    ///
    /// @return what the platform's `OpenBook` returns.
    int StartLoginWizard();

    /// Removes all local state of the account: the downloaded books, the configuration folder, the
    /// hidden files, then what else lies directly in the sync folder; tells the other applications
    /// and ends the browser. Whatever fails, the rest is done. The paths go to the shell as they
    /// are: the sync folder must be a plain word to it. Blocks until all commands have ended, and
    /// for a registration if the device has no token.
    void LogOut();
};
