#include "device-check/scratch_folder.h"

#include <dirent.h>
#include <stdlib.h>
#include <unistd.h>

#include <vector>

#include "posix/system_error.h"

namespace tavro::device_check {

ScratchFolder::ScratchFolder(const std::string& parent)
    : path_(parent + "/.tavro-device-check-XXXXXX") {
    if (::mkdtemp(&path_[0]) == nullptr)
        posix::throwSystemError("cannot make a folder in", parent);
}

ScratchFolder::~ScratchFolder() {
    clear();
    ::rmdir(path_.c_str());
}

void ScratchFolder::clear() const {
    DIR* const folder = ::opendir(path_.c_str());
    if (folder == nullptr)
        return;
    std::vector<std::string> names;
    while (const dirent* const entry = ::readdir(folder))
        names.emplace_back(entry->d_name);
    ::closedir(folder);
    for (const std::string& name : names)
        ::unlink((path_ + "/" + name).c_str());  // which refuses "." and ".."
}

}  // namespace tavro::device_check
