#include "support/device_root.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

const fs::path root = device_paths::root;

}  // namespace

DeviceRoot::DeviceRoot() {
    if (root.empty())
        throw std::logic_error("the tests need a build with TAVRO_DEVICE_ROOT set");
    fs::create_directories(root.parent_path());
    lock_ = ::open((root.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (lock_ == -1 || ::flock(lock_, LOCK_EX) == -1)
        throw std::runtime_error("cannot lock the device root");
    fs::remove_all(root);
    fs::create_directories(configuration());
    fs::create_directories(syncFolder());
}

DeviceRoot::~DeviceRoot() {
    std::error_code ignored;
    fs::remove_all(root, ignored);  // programs outside the tests have the same device
    ::close(lock_);
}

void DeviceRoot::writeServerSettings(int port) const {
    const std::string number = std::to_string(port);
    writeFile(device_paths::server_settings,
              "baseApiUrl=http://127.0.0.1/IOSCloudManagement.svc/\napiPort=" + number +
                  "\nuploadUrl=http://127.0.0.1/UploadContent.aspx\n" + "uploadPort=" + number +
                  "\ndownloadUrl=http://127.0.0.1/DownloadContent.aspx\n" +
                  "downloadPort=" + number + "\n");
}

void DeviceRoot::writeAccount(const std::string& more) const {
    writeFile(file(account_files::configuration), accountConfiguration(syncFolder()) + more);
}
