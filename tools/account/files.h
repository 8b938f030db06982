#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavro::tools {

// Files of the account and books, replaced as posix/atomic_file.h does it: the old content stays
// until all of the new is on the disk. What goes wrong is thrown as Failure.

/// Makes `content` the whole content of the file `path` (mode 0600).
void replaceFile(const std::string& path, std::string_view content);

/// Makes the file `path` a copy of the file `source`.
void replaceByCopy(const std::string& path, const std::string& source);

/// The content of the file `path`; nothing when there is no such file. Throws Failure when it
/// cannot be read, so that what cannot be read never counts as missing.
std::optional<std::string> contentOf(const std::string& path);

/// What is left to read of the open file `descriptor`, which is called `path`. Throws Failure.
std::string contentThrough(int descriptor, const std::string& path);

/// Waits until what another has written into the file `path` is on the disk. Throws Failure.
void flush(const std::string& path);

/// Removes the file `path`, if there is one. Throws Failure when it cannot be removed.
void removeFile(const std::string& path);

/// Whether there is something at `path`, whatever it is. Throws Failure when that cannot be told,
/// so that what cannot be seen never counts as missing.
bool exists(const std::string& path);

/// Whether `path` is a regular file; what cannot be looked at (a link that leads to itself, a name
/// longer than the file system has) is none. Throws Failure when the disk does not tell.
bool isRegularFile(const std::string& path);

/// Names of all that lies directly in `folder`, in order; none when there is no such folder. Throws
/// Failure when they cannot be read.
std::vector<std::string> namesIn(const std::string& folder);

/// Throws the Failure that `path` cannot be read for the reason `error`, the `errno` of the call of
/// the system that failed; 0 when nobody knows the reason.
[[noreturn]] void throwCannotRead(const std::string& path, int error);

/// Throws the Failure that `path` cannot be read, which a call of the library or of the platform
/// has found. They do not tell why, and `errno` may be that of something else: the reason is what
/// an attempt of our own meets, and none when that succeeds.
[[noreturn]] void throwUnreadable(const std::string& path);

/// Throws the Failure that `path` cannot be written for the reason `error`, as `throwCannotRead`
/// has it; without one where the library or the platform was to write it.
[[noreturn]] void throwCannotWrite(const std::string& path, int error = 0);

/// Throws the Failure that the file `path` cannot be locked for the reason `error`.
[[noreturn]] void throwCannotLock(const std::string& path, int error);

/// Throws the Failure that the file `path`, read again, does not hold what was written to it: the
/// library writes its stores without a look at the outcome.
[[noreturn]] void throwNotWritten(const std::string& path);

}  // namespace tavro::tools
