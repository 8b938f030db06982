// Transfers over the loopback: the library's against libcurl's, and libcurl's against the memory.

#include <cstring>
#include <filesystem>
#include <memory>

#include "curlmanager.h"
#include "support/raw_curl.h"
#include "support/require.h"
#include "support/server_process.h"
#include "support/subject.h"
#include "support/temporary_folder.h"
#include "transport/partial_file.h"

namespace bench {

namespace {

using folium::tavro::CurlManager;

const RawCurl::Fields form_fields = {{"Token", "token"}, {"SessionId", "session"}, {"ItemId", "1"}};
const std::string file_name = "book";

/// A running server, both clients, and the folder of their files.
struct Transfers {
    TemporaryFolder folder;
    ServerProcess server = transferServer();
    CurlManager library;
    RawCurl raw;

    static std::string bytesUrl(std::int64_t size) {
        return "http://127.0.0.1/bytes/" + std::to_string(size);
    }

    void requireFile(const std::string& path, std::int64_t size) const {
        require(std::filesystem::file_size(path) == static_cast<std::uintmax_t>(size),
                "the file comes whole");
    }
};

Subject request(std::int64_t size) {
    const auto all = std::make_shared<Transfers>();
    const std::string url = Transfers::bytesUrl(size);
    const auto wanted = static_cast<std::size_t>(size);
    const auto ours = [=] {
        all->library.sendRequest(url, all->server.port, "<Request/>");
        require(all->library.responseBuffer.size() == wanted, "the answer comes whole");
    };
    const auto limit = [=] {
        require(all->raw.request(url, all->server.port, "<Request/>").size() == wanted,
                "the answer comes whole");
    };
    return {inProcess(ours), inProcess(limit)};
}

Subject upload(std::int64_t size) {
    const auto all = std::make_shared<Transfers>();
    const std::string url = "http://127.0.0.1/taken";
    const std::string path = all->folder / file_name;
    writeFile(path, std::string(static_cast<std::size_t>(size), 'x'));
    const std::string taken = std::to_string(size);
    const auto ours = [=] {
        all->library.uploadFile(url, all->server.port, form_fields, path);
        const std::vector<char>& answer = all->library.responseBuffer;
        require(std::string(answer.begin(), answer.end()) == taken, "the file is taken whole");
    };
    const auto limit = [=] {
        require(all->raw.upload(url, all->server.port, form_fields, path) == taken,
                "the file is taken whole");
    };
    return {inProcess(ours), inProcess(limit)};
}

/// Downloads `size` bytes to a file by libcurl alone.
std::function<void()> rawDownload(const std::shared_ptr<Transfers>& all, std::int64_t size) {
    const std::string path = transport::partialFile(all->folder / ".", file_name);
    return [=] {
        all->raw.download(Transfers::bytesUrl(size), all->server.port, form_fields, path);
        all->requireFile(path, size);
    };
}

Subject download(std::int64_t size) {
    const auto all = std::make_shared<Transfers>();
    const std::string folder = all->folder / ".";
    const auto ours = [=] {
        require(all->library.downloadFile(Transfers::bytesUrl(size), all->server.port, form_fields,
                                          folder, {}) == file_name,
                "the book comes");
        all->requireFile(transport::partialFile(folder, file_name), size);
    };
    return {inProcess(ours), inProcess(rawDownload(all, size))};
}

/// How near libcurl itself comes to the memory: a copy of as many bytes, a block at a time.
Subject downloadOfLibcurl(std::int64_t size) {
    const auto copy = [=, block = std::make_shared<std::string>(1 << 18, 'x'),
                       target = std::make_shared<std::string>(1 << 18, 'y')] {
        for (std::int64_t left = size; left > 0; left -= std::int64_t{1} << 18)
            std::memcpy(target->data(), block->data(),
                        std::min(block->size(), static_cast<std::size_t>(left)));
    };
    return {inProcess(rawDownload(std::make_shared<Transfers>(), size)), inProcess(copy)};
}

}  // namespace

std::vector<Family> transferFamilies() {
    const std::vector<std::int64_t> sizes = {1'000'000, 100'000'000, 1'000'000'000};
    return {{"request", "bytes", {1'000, 1'000'000, 100'000'000, 1'000'000'000}, request},
            {"upload", "bytes", sizes, upload},
            {"download", "bytes", sizes, download},
            {"libcurl-to-memory", "bytes", sizes, downloadOfLibcurl}};
}

}  // namespace bench
