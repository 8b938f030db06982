#include <stdio.h>
#include <sys/file.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include "device-check/check.h"
#include "device-check/files.h"
#include "posix/files.h"
#include "posix/read_only_mapping.h"
#include "posix/retry_after_signal.h"

namespace tavro::device_check {

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
    const std::string path = writeFile(context.folder, "locked", "-");
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
    const std::string path = writeFile(context.folder, "mapped", content);
    const posix::ReadOnlyMapping mapping(openFile(path, O_RDONLY).get());
    if (!mapping)
        posix::throwSystemError("cannot map", path);
    expect(std::string(mapping.data(), mapping.size()) == content, "a mapped file reads otherwise");
    return "shows what a file holds";
}

std::string checkNames(const Context& context) {
    constexpr std::size_t longest = 255;
    for (const std::string& name : {std::string(".hidden"), std::string(longest, 'n')})
        expect(posix::readFile(writeFile(context.folder, name.c_str(), name)) == name,
               "a file called " + name + " reads otherwise");
    return "a leading dot and 255 bytes";
}

std::string checkRename(const Context& context) {
    const std::string from = writeFile(context.folder, "new", "new");
    const std::string to = writeFile(context.folder, "old", "old");
    if (::rename(from.c_str(), to.c_str()) != 0)
        posix::throwSystemError("cannot replace", to);
    expect(posix::readFile(to) == "new", "a replaced file keeps its content");
    return "replaces files";
}

std::string checkSpace(const Context& context) {
    constexpr unsigned long long mebibyte = 1048576, least = 10;
    struct statvfs status = {};
    if (::statvfs(context.folder.c_str(), &status) != 0)
        posix::throwSystemError("cannot tell the free space of", context.folder);
    const unsigned long long space = status.f_bavail * 1ULL * status.f_frsize / mebibyte;
    std::string found = std::to_string(space) + " MiB";
    expect(space >= least, "only " + found);
    return found;
}

}  // namespace

std::vector<Check> fileSystemChecks() {
    const auto flocks = [](int descriptor) { return ::flock(descriptor, LOCK_EX | LOCK_NB); };
    const auto lockfs = [](int descriptor) { return ::lockf(descriptor, F_TLOCK, 0); };
    return {{"flock", "processes spoil the book map and the list of waiting books",
             "put the configuration folder on a file system that knows flock",
             [=](const Context& context) { return checkLock(flocks, context); }},
            {"lockf", "processes spoil the journal of changes, and books are not sent back",
             "put the configuration folder on a file system that knows lockf",
             [=](const Context& context) { return checkLock(lockfs, context); }},
            {"mmap", "the book map and the catalogue read as empty", "", checkMapping},
            {"file names", "the account's files, or books with long names, are not stored", "",
             checkNames},
            {"rename", "passwords and downloaded books do not get their places", "", checkRename},
            {"free space", "books are cut", "remove books", checkSpace}};
}

}  // namespace tavro::device_check
