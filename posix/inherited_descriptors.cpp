#include "posix/inherited_descriptors.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace posix {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// The open descriptors of this process.
std::vector<int> openDescriptors() {
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir("/proc/self/fd"));
    std::vector<int> descriptors;
    if (!folder)
        return descriptors;
    while (const dirent* const entry = ::readdir(folder.get()))
        if (entry->d_name[0] != '.')
            descriptors.push_back(std::atoi(entry->d_name));  // NOLINT(cert-err34-c): the kernel's
    return descriptors;
}

}  // namespace

void openStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) == -1)
            ::open("/dev/null", O_RDWR);  // takes the lowest number, which is this one
}

void closeInheritedDescriptors() {
    for (const int descriptor : openDescriptors())
        if (descriptor > STDERR_FILENO)
            ::close(descriptor);
}

}  // namespace posix
