#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavro::device_check {

/// Thrown by a check that finds something wrong; the text says what.
class [[gnu::visibility("default")]] Wrong : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Thrown by a check that cannot be made here; the text says why.
class [[gnu::visibility("default")]] Skipped : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Says `problem` unless `holds`.
inline void expect(bool holds, const std::string& problem) {
    if (!holds)
        throw Wrong(problem);
}

/// What one request to the service hands to the next. It lies in memory that all processes share,
/// so that no secret is written to a file.
struct ServiceState {
    char token[1024];    ///< device token
    char session[1024];  ///< session ID
    char item[64];       ///< item ID of a book to download
};

/// What the checks work with.
struct Context {
    std::string folder;       ///< an empty folder for whatever a check writes
    std::string password;     ///< of the account; empty for the stored one
    std::string application;  ///< that is to be opened
    ServiceState* service = nullptr;
};

/// One check. It runs in a process of its own.
struct Check {
    const char* name;
    const char* breaks;  ///< what does not work where it fails
    const char* advice;  ///< what to do then; may be empty
    /// Returns what it found, or throws.
    std::function<std::string(const Context& context)> run;
    int seconds = 20;  ///< how long it may take
};

/// How a check ended.
enum class Status : char { Ok = 'o', Wrong = 'w', Skipped = 's' };

/// What came of a check.
struct Result {
    Status status;
    std::string found;  ///< in words, on one line
};

/// Whether the libraries load, and their versions.
std::vector<Check> libraryChecks();

/// What the platform's libraries do when they are called.
std::vector<Check> platformChecks();

/// How the platform keeps settings and secrets.
std::vector<Check> settingsChecks();

/// What the platform's image loaders make of small pictures.
std::vector<Check> imageChecks();

/// What the file system of the context's folder can do.
std::vector<Check> fileSystemChecks();

/// The device's fixed paths, and what log-out needs.
std::vector<Check> folderChecks();

/// Calls with a visible effect, made only when asked for.
Check eventCheck();
Check applicationCheck();

/// A round of requests to the configured service.
std::vector<Check> serviceChecks();

}  // namespace tavro::device_check
