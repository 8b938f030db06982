#include <fcntl.h>
#include <lectern.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "device-check/shared_library.h"
#include "platform/device_paths.h"
#include "posix/file_status.h"
#include "posix/files.h"
#include "posix/read_only_mapping.h"
#include "posix/retry_after_signal.h"
#include "posix/system_error.h"
#include "posix/write_all.h"
#include "session/account_keys.h"

namespace tavro::device_check {

posix::FileDescriptor openFile(const std::string& path, int flags) {
    posix::FileDescriptor file(::open(path.c_str(), flags | O_CLOEXEC, 0600));
    if (!file)
        posix::throwSystemError("cannot open", path);
    return file;
}

std::string writeFile(const Context& context, const std::string& name, const std::string& content) {
    std::string path = context.folder + "/" + name;
    if (!posix::writeAll(openFile(path, O_WRONLY | O_CREAT | O_TRUNC).get(), content))
        posix::throwSystemError("cannot write", path);
    return path;
}

namespace {

/// Asks for a lock without waiting for it; 0 when the process has it then.
using TryLock = int (*)(int descriptor);

/// Whether another process gets the lock on the file `path` at this moment.
bool othersGet(TryLock tryLock, const std::string& path) {
    const pid_t other = ::fork();
    if (other == 0)
        ::_exit(tryLock(openFile(path, O_RDWR).get()) == 0 ? 1 : 0);
    int status = -1;
    posix::retryAfterSignal([&] { return ::waitpid(other, &status, 0); });
    return status != 0;
}

std::string checkLock(TryLock tryLock, const Context& context) {
    const std::string path = writeFile(context, "locked", "-");
    posix::FileDescriptor file = openFile(path, O_RDWR);
    if (tryLock(file.get()) != 0)
        posix::throwSystemError("cannot lock", path);
    expect(!othersGet(tryLock, path), "two processes hold one lock at a time");
    file.close();
    expect(othersGet(tryLock, path), "a lock stays when its file is closed");
    return "keeps other processes out";
}

std::string checkMapping(const Context& context) {
    const std::string content(10000, 'm');
    const std::string path = writeFile(context, "mapped", content);
    const posix::ReadOnlyMapping mapping(openFile(path, O_RDONLY).get());
    if (!mapping)
        posix::throwSystemError("cannot map", path);
    expect(std::string(mapping.data(), mapping.size()) == content, "a mapped file reads otherwise");
    return "shows what a file holds";
}

std::string checkNames(const Context& context) {
    for (const std::string& name : {std::string(".hidden"), std::string(255, 'n')})
        expect(posix::readFile(writeFile(context, name, name)) == name,
               "a file called " + name + " reads otherwise");
    return "a leading dot and 255 bytes";
}

std::string checkRename(const Context& context) {
    const std::string from = writeFile(context, "new", "new"), to = writeFile(context, "old", "");
    if (::rename(from.c_str(), to.c_str()) != 0)
        posix::throwSystemError("cannot replace", to);
    expect(posix::readFile(to) == "new", "a replaced file keeps its content");
    return "replaces files";
}

std::string checkSpace(const Context& context) {
    struct statvfs status = {};
    if (::statvfs(context.folder.c_str(), &status) != 0)
        posix::throwSystemError("cannot tell the free space of", context.folder);
    const unsigned long long mebibytes = status.f_bavail * 1ULL * status.f_frsize / 1048576;
    std::string found = std::to_string(mebibytes) + " MiB";
    expect(mebibytes >= 10, "only " + found);
    return found;
}

/// Expects that this process's user may use the file `path` in the way `mode`.
std::string mayUse(const std::string& path, int mode) {
    if (::access(path.c_str(), mode) != 0)
        posix::throwSystemError("cannot use", path);
    return path;
}

std::string checkConfigurationFolder(const Context&) {
    const std::string folder = device_paths::configurationFolder();
    if (posix::exists(folder))
        return mayUse(folder, R_OK | W_OK | X_OK);
    return mayUse(folder.substr(0, folder.rfind('/')), W_OK | X_OK) + ", where it is to be made";
}

std::string checkSyncFolder(const Context&) {
    const char *const file = device_paths::accountConfiguration(),
                      *const key = account_keys::download_folder;
    if (!posix::exists(file))
        throw Skipped("no account is set up");
    const std::string folder = LECTERN(ReadString)(LECTERN(OpenConfig)(file, nullptr), key, "");
    expect(!folder.empty(), std::string(key) + " is not set in " + file);
    return mayUse(folder, R_OK | W_OK | X_OK);
}

std::string checkServerSettings(const Context&) {
    if (!posix::exists(device_paths::serverSettings()))
        return "no file, the built-in ones count";
    return mayUse(device_paths::serverSettings(), R_OK);
}

std::string checkShell(const Context&) {
    for (const std::string program : {"rm", "killall"})
        expect(std::system(("command -v " + program).c_str()) == 0, "a shell finds no " + program);
    return "finds rm and killall";
}

auto locks(TryLock tryLock) {
    return [=](const Context& context) { return checkLock(tryLock, context); };
}

auto starts(const char* program) {
    return [=](const Context&) { return mayUse(program, X_OK); };
}

}  // namespace

std::vector<Check> fileChecks() {
    return {
        {"flock", "processes spoil the book map and the list of waiting books",
         "put the configuration folder on a file system that knows flock",
         locks([](int descriptor) { return ::flock(descriptor, LOCK_EX | LOCK_NB); })},
        {"lockf", "processes spoil the journal of changes, and books are not sent back",
         "put the configuration folder on a file system that knows lockf",
         locks([](int descriptor) { return ::lockf(descriptor, F_TLOCK, 0); })},
        {"mmap", "the book map and the catalogue read as empty", "", checkMapping},
        {"file names", "the account's files, or books with long names, are not stored", "",
         checkNames},
        {"rename", "passwords and downloaded books do not get their places", "", checkRename},
        {"free space", "books are cut", "remove books", checkSpace},
        {"configuration folder", "no account can be set up", "make it, writable for the programs",
         checkConfigurationFolder},
        {"sync folder", "no book is downloaded", "make it, or set another one", checkSyncFolder},
        {"synchronisation application", "books come and go in the foreground only",
         "install tavro_sync.app there", starts(device_paths::syncApplication())},
        {"login wizard", "nobody can log in from the browser", "install tavro_wizard.app there",
         starts(device_paths::wizardApplication())},
        {"server settings", "the built-in service is asked", "let everybody read the file",
         checkServerSettings},
        {"shell", "a log-out leaves the account's files", "put both programs into the path",
         checkShell}};
}

}  // namespace tavro::device_check
