#include "tavroctl/device_applications.h"

#include <unistd.h>

#include <filesystem>

#include "account/files.h"
#include "device_root/device_root.h"
#include "platform/device_paths.h"
#include "program/failure.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// The application `name` that was built or installed with this program; empty if there is none.
fs::path ownApplication(const fs::path& name) {
    const fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
    for (const fs::path& folder : {here, here / TAVRO_PRIVATE_FOLDER})
        if (isRegularFile(folder / name))
            return (folder / name).lexically_normal();
    return {};
}

/// Makes `path` a link to `target`. At no moment is there none, once there was one.
void replaceLink(const fs::path& path, const fs::path& target) {
    const fs::path fresh = path.string() + ".new";
    fs::remove(fresh);
    fs::create_symlink(target, fresh);
    fs::rename(fresh, path);
}

}  // namespace

void makeDevice() {
    if (device_root::is_fixed)
        return;
    const fs::path root = device_root::root();
    if (fs::create_directories(root))
        fs::permissions(root, fs::perms::owner_all);  // passwords and tokens will lie in it
    fs::create_directories(device_paths::applicationFolder());
    for (const fs::path path :
         {device_paths::syncApplication(), device_paths::wizardApplication()}) {
        const fs::path target = ownApplication(path.filename());
        if (!target.empty() && (fs::is_symlink(path) || !fs::exists(path)))
            replaceLink(path, target);
    }
}

void requireApplication(const char* path) {
    if (!isRegularFile(path) || ::access(path, X_OK) != 0)
        throw Failure(std::string("there is no application ") + path,
                      "run 'tavroctl setup', which links it to its place");
}

}  // namespace tavro::tools
