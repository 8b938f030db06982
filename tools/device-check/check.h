#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "posix/file_descriptor.h"

namespace tavro::device_check {

/// Thrown by a check that cannot be made here; the text says why. Other exceptions say what is
/// wrong.
class [[gnu::visibility("default")]] Skipped : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Says `problem` unless `holds`.
inline void expect(bool holds, const std::string& problem) {
    if (!holds)
        throw std::runtime_error(problem);
}

/// What the checks work with, and what one request to the service leaves for the next.
struct Context {
    std::string folder;    ///< an empty folder for whatever a check writes
    std::string password;  ///< of the account; empty for the stored one
    bool verbose = false;  ///< whether what the libraries print is shown
    std::string token = {}, session = {}, item = {};  ///< of the device, the log-in, a book
};

/// One check.
struct Check {
    const char* name;
    const char* breaks;  ///< what does not work where it fails
    const char* advice;  ///< what to do then; may be empty
    /// Returns what it found, or throws.
    std::function<std::string(Context& context)> run;
    int seconds = 20;  ///< how long it may take
};

/// What came of a check.
struct Result {
    char status;        ///< 'o' for ok, 's' for skipped, 'w' for wrong
    std::string found;  ///< in words, on one line
};

/// Runs `check` in a child of this process, so that a crash, an exit or a hang of what it calls is
/// a result like any other. The child is killed when its time is over, and when a signal interrupts
/// this process. What it prints goes to standard error, or nowhere.
Result runInChild(const Check& check, Context& context);

/// The result of `check` for a person and, as a JSON object, for a program.
std::string asLine(const Check& check, const Result& result);
std::string asObject(const Check& check, const Result& result);

/// Opens the file `path`. Throws `std::system_error`.
posix::FileDescriptor openFile(const std::string& path, int flags);

/// Makes `content` the whole content of the file `name` in the context's folder. Throws
/// `std::system_error`. @return its full path.
std::string writeFile(const Context& context, const std::string& name, const std::string& content);

/// Whether the libraries load, and their versions.
std::vector<Check> libraryChecks();

/// What the platform's libraries do when they are called.
std::vector<Check> platformChecks();

/// Calls with a visible effect: the event of a log-out, and the opening of `application`.
Check eventCheck();
Check applicationCheck(const std::string& application);

/// What the file system of the context's folder can do, and whether the fixed paths can be used.
std::vector<Check> fileChecks();

/// A round of requests to the configured service.
std::vector<Check> serviceChecks();

}  // namespace tavro::device_check
