#include "support/device_root.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

/// The folder of the root, chosen while it lives.
class ChosenRoot {
public:
    ChosenRoot() : path(folder_ / "device") {
        if (device_root::accepted(path).empty())
            throw std::logic_error("the tests need a TMPDIR that is a plain path, not " + path);
        ::setenv(device_root::variable, path.c_str(), 1);
    }

private:
    const TemporaryFolder folder_;

public:
    const std::string path;
};

// In every test program: no test may reach the device of whoever runs it.
[[maybe_unused]] const std::string& chosenBeforeAll = deviceRoot();

}  // namespace

const std::string& deviceRoot() {
    static const ChosenRoot root;
    return root.path;
}

DeviceRoot::DeviceRoot() {
    if (device_root::root() != deviceRoot())
        throw std::logic_error("the tests need a build with TAVRO_DEVICE_ROOT set");
    fs::remove_all(deviceRoot());
    fs::create_directories(configuration());
    fs::create_directories(syncFolder());
}

void DeviceRoot::writeServerSettings(int port) const {
    const std::string number = std::to_string(port);
    writeFile(device_paths::serverSettings(),
              "baseApiUrl=http://127.0.0.1/IOSCloudManagement.svc/\napiPort=" + number +
                  "\nuploadUrl=http://127.0.0.1/UploadContent.aspx\n" + "uploadPort=" + number +
                  "\ndownloadUrl=http://127.0.0.1/DownloadContent.aspx\n" +
                  "downloadPort=" + number + "\n");
}

void DeviceRoot::writeAccount(const std::string& more) const {
    writeFile(file(account_files::configuration), accountConfiguration(syncFolder()) + more);
}
