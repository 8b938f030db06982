#include "curlmanager.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "platform/log.h"
#include "transport/header_list.h"
#include "transport/multipart_form.h"
#include "transport/partial_file.h"

namespace folium::tavro {

namespace {

constexpr std::size_t minimum_capacity = 4096;
constexpr long request_timeout_seconds = 60;
constexpr std::size_t log_block = 2048;
constexpr std::size_t most_logged_blocks = 4;
constexpr const char* request_signature =
    "std::string folium::tavro::CurlManager::sendRequest(const std::string&, int, "
    "const std::string&)";

/// The common start of every transfer: an empty buffer and a handle without options.
void begin(CurlManager& manager) {
    manager.responseBuffer.clear();
    manager.responseBuffer.reserve(minimum_capacity);
    curl_easy_reset(manager.curl);
}

/// Sets one option; true when libcurl took it.
template <typename Value>
bool set(CURL* curl, CURLoption option, Value value) {
    return curl_easy_setopt(curl, option, value) == CURLE_OK;
}

/// Where to send: URL, port and the method POST, in this order.
bool setTarget(CURL* curl, const std::string& url, int port) {
    return set(curl, CURLOPT_URL, url.c_str()) && set(curl, CURLOPT_PORT, long{port}) &&
           set(curl, CURLOPT_POST, 1L);
}

/// The options up to the target of an XML request.
bool setRequestOptions(CurlManager& manager, const std::string& url, int port) {
    CURL* const curl = manager.curl;
    return set(curl, CURLOPT_VERBOSE, 1L) && set(curl, CURLOPT_TIMEOUT, request_timeout_seconds) &&
           set(curl, CURLOPT_FOLLOWLOCATION, 1L) && set(curl, CURLOPT_AUTOREFERER, 1L) &&
           set(curl, CURLOPT_WRITEFUNCTION, &CurlManager::write_callback) &&
           set(curl, CURLOPT_WRITEDATA, static_cast<void*>(&manager)) && setTarget(curl, url, port);
}

/// The options up to the target of a download.
bool setDownloadOptions(CurlManager& manager, const std::string& url, int port) {
    CURL* const curl = manager.curl;
    void* const user = &manager;
    return set(curl, CURLOPT_VERBOSE, 1L) && set(curl, CURLOPT_FOLLOWLOCATION, 1L) &&
           set(curl, CURLOPT_AUTOREFERER, 1L) &&
           set(curl, CURLOPT_WRITEFUNCTION, &CurlManager::write_download) &&
           set(curl, CURLOPT_WRITEDATA, user) &&
           set(curl, CURLOPT_HEADERFUNCTION, &CurlManager::write_header) &&
           set(curl, CURLOPT_HEADERDATA, user) && setTarget(curl, url, port);
}

/// The options up to the target of an upload.
bool setUploadOptions(CurlManager& manager, const std::string& url, int port) {
    return set(manager.curl, CURLOPT_WRITEFUNCTION, &CurlManager::write_callback) &&
           set(manager.curl, CURLOPT_WRITEDATA, static_cast<void*>(&manager)) &&
           setTarget(manager.curl, url, port);
}

/// The headers of an XML request. The service wants the whole URL as its SOAP action.
HeaderList requestHeaders(const std::string& url) {
    HeaderList headers;
    append(headers, "Content-Type: application/xml; charset=utf-8");
    append(headers, ("SOAPAction: " + url).c_str());
    append(headers, "Accept: text/xml");
    return headers;
}

/// Runs the transfer; false, with a line on the standard error stream, when it failed.
bool perform(CURL* curl) {
    const CURLcode code = curl_easy_perform(curl);
    if (code == CURLE_OK)
        return true;
    std::fprintf(stderr, "curl_easy_perform() failed: %s\n", curl_easy_strerror(code));
    return false;
}

/// Sends `form`; false when its option was refused or the transfer failed.
bool post(CURL* curl, const MultipartForm& form) {
    return form.attachTo(curl) == CURLE_OK && perform(curl);
}

/// Logs an answer as text unless it is long.
void logAnswer(const std::string& url, std::vector<char>& answer) {
    if (answer.size() / log_block > most_logged_blocks)
        return;
    answer.push_back('\0');
    fl_print_log2(platform::log_trace, __FILE__, __LINE__, request_signature,
                  "[pid:%d]Request to %s return [%s]", g_process_pid, url.c_str(), answer.data());
    answer.pop_back();
}

/// Closes the partial file; true when there was one and the system took all of its bytes.
bool closeDownload(CurlManager& manager) {
    std::FILE* const stream = std::exchange(manager.downloadStream, nullptr);
    return stream != nullptr && std::fclose(stream) == 0;
}

/// Removes the file that the book of a failed download would have become; the partial file stays.
void removeAnnounced(const CurlManager& manager) {
    if (!manager.downloadFileName.empty())
        ::unlink((manager.downloadDir + "/" + manager.downloadFileName).c_str());
}

}  // namespace

CurlManager::CurlManager() {
    curl_global_init(CURL_GLOBAL_ALL);
    curl = curl_easy_init();
}

CurlManager::~CurlManager() {
    curl_easy_cleanup(curl);
    curl_global_cleanup();
}

std::string CurlManager::sendRequest(const std::string& url, int port, const std::string& params) {
    begin(*this);
    if (!setRequestOptions(*this, url, port))
        return {};
    const HeaderList headers = requestHeaders(url);
    if (!set(curl, CURLOPT_HTTPHEADER, headers.get()) ||
        !set(curl, CURLOPT_POSTFIELDS, params.c_str()))
        return {};
    fl_print_log2(platform::log_trace, __FILE__, __LINE__, request_signature,
                  "[pid:%d]Requesting url [%s] with params [%s]", g_process_pid, url.c_str(),
                  params.c_str());
    perform(curl);
    logAnswer(url, responseBuffer);
    return {};
}

const std::string& CurlManager::downloadFile(const std::string& url, int port,
                                             const FormFields& fields, const std::string& dir,
                                             const std::string& /*ignored*/) {
    downloadDir = dir;
    downloadFileName.clear();
    downloadStream = nullptr;
    begin(*this);
    const bool transferred =
        setDownloadOptions(*this, url, port) && post(curl, MultipartForm(fields));
    if (!transferred)
        removeAnnounced(*this);
    const bool saved = closeDownload(*this);
    // Without a name, so that nobody takes a cut book for a whole one.
    if (!transferred || !saved)
        downloadFileName.clear();
    return downloadFileName;
}

void CurlManager::uploadFile(const std::string& url, int port, const FormFields& fields,
                             const std::string& filePath) {
    begin(*this);
    if (!setUploadOptions(*this, url, port))
        return;
    MultipartForm form(fields);
    form.addFile(filePath);
    post(curl, form);
}

std::size_t CurlManager::write_callback(char* data, std::size_t size, std::size_t count,
                                        void* manager) {
    const std::size_t length = size * count;
    if (manager == nullptr || length == 0)
        return 0;
    auto& buffer = static_cast<CurlManager*>(manager)->responseBuffer;
    std::size_t capacity = buffer.capacity();
    while (capacity < buffer.size() + length)
        capacity = capacity == 0 ? 1 : 2 * capacity;
    buffer.reserve(capacity);
    buffer.insert(buffer.end(), data, data + length);
    return length;
}

std::size_t CurlManager::write_download(char* data, std::size_t size, std::size_t count,
                                        void* manager) {
    if (manager == nullptr)
        return 0;
    std::FILE* const stream = static_cast<CurlManager*>(manager)->downloadStream;
    return stream == nullptr ? 0 : std::fwrite(data, size, count, stream);
}

std::size_t CurlManager::write_header(char* data, std::size_t size, std::size_t count,
                                      void* manager) {
    if (manager == nullptr)
        return 0;
    constexpr std::string_view key = "filename=";
    constexpr std::size_t line_end = 2;  // CR LF
    const std::string_view line(data, size * count);
    if (const std::size_t position = line.find(key); position != std::string_view::npos) {
        auto& self = *static_cast<CurlManager*>(manager);
        const std::string_view rest = line.substr(position + key.size());
        self.downloadFileName = rest.substr(0, rest.size() - std::min(rest.size(), line_end));
        self.downloadStream = std::fopen(
            ::transport::partialFile(self.downloadDir, self.downloadFileName).c_str(), "w+");
    }
    return line.size();
}

}  // namespace folium::tavro
