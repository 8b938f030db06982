#include "tavro-sync/covers.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "account/files.h"
#include "client/cover_extensions.h"
#include "program/failure.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

constexpr std::size_t largest_cover = std::size_t(16) << 20;
constexpr long connect_seconds = 10;
constexpr long transfer_seconds = 60;
constexpr long most_redirects = 5;

/// What an image begins with, and the extension by which the library browser knows its kind.
constexpr std::pair<std::string_view, const char*> kinds[] = {
    {"\xFF\xD8\xFF", cover_extension::jpeg},
    {"\x89PNG", cover_extension::png},
    {"BM", cover_extension::bmp}};

const char* extensionFor(std::string_view image) {
    for (const auto& [beginning, extension] : kinds)
        if (image.substr(0, beginning.size()) == beginning)
            return extension;
    return nullptr;
}

using Transfer = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

/// libcurl's body callback: keeps the bytes, or gives up when they are too many.
std::size_t keep(char* data, std::size_t size, std::size_t count, void* body) {
    auto& image = *static_cast<std::string*>(body);
    if (image.size() + size * count > largest_cover)
        return 0;
    image.append(data, size * count);
    return size * count;
}

/// Gets the body of the answer of the web address `url`.
CURLcode get(const std::string& url, std::string& body) {
    const Transfer transfer(curl_easy_init(), curl_easy_cleanup);
    CURL* const curl = transfer.get();
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    // The address comes from the service: it must not lead to files of this machine.
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, most_redirects);
    curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, connect_seconds);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, transfer_seconds);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, keep);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
    return curl_easy_perform(curl);
}

}  // namespace

std::set<std::string>& Covers::present() {
    if (present_)
        return *present_;
    present_.emplace();
    std::error_code unread;  // as long as no cover was stored
    for (fs::directory_iterator entry(folder_, unread), end; entry != end; entry.increment(unread))
        present_->insert(entry->path().filename());
    return *present_;
}

bool Covers::has(int item) {
    return std::any_of(std::begin(kinds), std::end(kinds), [&](const auto& kind) {
        return present().count(std::to_string(item) + kind.second) > 0;
    });
}

std::string Covers::hostOf(const std::string& url) {
    const std::size_t scheme = url.find("://");
    const std::size_t start = scheme == std::string::npos ? 0 : scheme + 3;
    return url.substr(start, url.find('/', start) - start);
}

void Covers::fetch(int item, const std::string& url) {
    std::string image;
    const CURLcode code = get(url, image);
    if (code == CURLE_COULDNT_RESOLVE_HOST || code == CURLE_COULDNT_CONNECT ||
        code == CURLE_OPERATION_TIMEDOUT)
        silentHosts_.insert(hostOf(url));
    if (code != CURLE_OK)
        throw Failure("no cover came from " + url + ": " + curl_easy_strerror(code));
    const char* const extension = extensionFor(image);
    if (extension == nullptr)
        throw Failure("what came from " + url + " is no JPEG, PNG or BMP image");
    std::error_code error;
    if (!fs::is_directory(folder_, error) && !fs::create_directory(folder_, error) && error)
        throw Failure("cannot create " + folder_ + ": " + error.message());
    const std::string name = std::to_string(item) + extension;
    replaceFile(folder_ + "/" + name, image);
    present().insert(name);
}

void Covers::remove(int item) {
    for (const auto& kind : kinds) {
        const std::string name = std::to_string(item) + kind.second;
        std::error_code error;
        fs::remove(folder_ + "/" + name, error);
        present().erase(name);
    }
}

}  // namespace tavro::tools
