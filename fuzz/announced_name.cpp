/// File names as a service announces them. Promises: every header line is taken whole; a name is
/// what stands behind "filename=" without the line end; the name that a download gets in the end
/// is free and, once taken, is not given again.

#include <cstring>
#include <string>

#include "curlmanager.h"
#include "posix/files.h"
#include "require.h"
#include "session/download_name.h"
#include "support/temporary_folder.h"

namespace {

using folium::tavro::CurlManager;

constexpr const char* key = "filename=";

/// Hands `line` to libcurl's header callback. @return what it makes of the announced name.
std::string announcedIn(CurlManager& manager, std::string line) {
    const std::size_t taken = CurlManager::write_header(line.data(), 1, line.size(), &manager);
    require(taken == line.size(), "a header line is taken whole");
    const posix::Stream opened(std::exchange(manager.downloadStream, nullptr));
    const std::size_t position = line.find(key);
    if (position == std::string::npos) {
        require(!opened, "nothing is opened without a name");
        return manager.downloadFileName;
    }
    const std::string rest = line.substr(position + std::strlen(key));
    require(manager.downloadFileName ==
                rest.substr(0, rest.size() - std::min<std::size_t>(rest.size(), 2)),
            "the name is all that stands behind its key");
    return manager.downloadFileName;
}

/// Whether a file can be made under `name` without leaving the folder.
bool isPlain(const std::string& name) {
    return !name.empty() && name.size() < 200 && name.find('/') == std::string::npos &&
           name != "." && name != "..";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TemporaryFolder folder;
    static CurlManager manager;  // which takes longer to make than all the rest
    manager.downloadFileName.clear();
    manager.downloadDir = folder / "missing";  // where a name cannot lead out of the folder
    std::string lines(reinterpret_cast<const char*>(data), size);
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size() - 1) + 1;
        const std::string announced = announcedIn(manager, lines.substr(0, end));
        lines.erase(0, end);
        const std::string name = session::freeName(folder / "", announced);
        require(!std::filesystem::exists((folder / name).c_str()), "the name is free");
        if (!isPlain(name))
            continue;
        writeFile(folder / name, "taken");
        require(session::freeName(folder / "", announced) != name,
                "a taken name is not given again");
    }
    return 0;
}
