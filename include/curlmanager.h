#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace folium::tavro {

/// The one class through which the library talks HTTP: an XML request, a download into a file
/// named by the server, and an upload of one file, all over a single libcurl handle.
///
/// Every operation blocks the calling thread until the transfer has ended and starts from a reset
/// handle, so no option survives from one to the next. Requests and downloads have libcurl write
/// its trace to the standard error stream. A transfer that fails is reported on the standard error
/// stream only, as "curl_easy_perform() failed: REASON"; the caller learns of it from an empty or
/// unparsable `responseBuffer` or an empty file name. HTTP error statuses are answers like any
/// other. An object is used by one thread at a time; it takes no lock.
class [[gnu::visibility("default")]] CurlManager {
public:
    /// Form fields as (name, value), sent in this order.
    using FormFields = std::vector<std::pair<std::string, std::string>>;

    /// Initialises libcurl for this object and creates its handle. libcurl counts these
    /// initialisations, so each object pairs its own with its own clean-up.
    CurlManager();

    /// Frees the handle. No transfer may be running.
    ~CurlManager();
    CurlManager(const CurlManager&) = delete;
    CurlManager& operator=(const CurlManager&) = delete;

    /// Posts an XML text and collects the answer in `responseBuffer`. The whole transfer may take
    /// 60 seconds at most.
    ///
    /// @param url where to.
    /// @param port TCP port, which wins over one in `url`.
    /// @param params the XML text, sent as it is.
    /// @return always the empty text; the answer is in `responseBuffer` only.
    std::string sendRequest(const std::string& url, int port, const std::string& params);

    /// Posts a form and streams the answer's body into `dir` + "/" + NAME + ".downloading", where
    /// NAME is what a "filename=" header announced, to the byte (quotes, further parameters and
    /// folders stay part of it). Without such a header nothing is written. There is no time limit.
    ///
    /// When the transfer fails, the file `dir` + "/" + NAME is removed and the partial file stays.
    ///
    /// @param url where to.
    /// @param port TCP port, which wins over one in `url`.
    /// @param fields the form.
    /// @param dir the folder, without a trailing "/".
    /// @param ignored not used.
    /// @return `downloadFileName`: NAME, or empty when nothing was announced or the body did not
    ///     reach the partial file whole. Valid until the next download of this object.
    const std::string& downloadFile(const std::string& url, int port, const FormFields& fields,
                                    const std::string& dir, const std::string& ignored);

    /// Posts a multipart form of fields and then a file (part "file", type text/plain), which is
    /// streamed. The answer lands in `responseBuffer`; it stays empty when the file cannot be read
    /// or the server cannot be reached. There is no time limit.
    ///
    /// @param url where to.
    /// @param port TCP port, which wins over one in `url`.
    /// @param fields the form's fields before the file.
    /// @param filePath the file.
    void uploadFile(const std::string& url, int port, const FormFields& fields,
                    const std::string& filePath);

    /// libcurl's body callback of requests and uploads: appends to `responseBuffer`.
    ///
    /// @param data the bytes, not zero-terminated.
    /// @param size bytes in an item.
    /// @param count number of items.
    /// @param manager the object, as set with `CURLOPT_WRITEDATA`.
    /// @return number of bytes taken; 0 for no bytes, and (which makes libcurl give up) for a null
    ///     `manager`.
    static std::size_t write_callback(char* data, std::size_t size, std::size_t count,
                                      void* manager);

    /// libcurl's body callback of downloads: writes to `downloadStream`.
    ///
    /// @param data the bytes, not zero-terminated.
    /// @param size bytes in an item.
    /// @param count number of items.
    /// @param manager the object, as set with `CURLOPT_WRITEDATA`.
    /// @return number of items written; 0 (which makes libcurl give up) for a null `manager` or
    ///     without a stream.
    static std::size_t write_download(char* data, std::size_t size, std::size_t count,
                                      void* manager);

    /// libcurl's header callback of downloads: takes the file name out of a "filename=" line and
    /// opens the partial file.
    ///
    /// @param data one header line with its line end, not zero-terminated.
    /// @param size bytes in an item.
    /// @param count number of items.
    /// @param manager the object, as set with `CURLOPT_HEADERDATA`.
    /// @return number of bytes taken; 0 (which makes libcurl give up) for a null `manager`.
    static std::size_t write_header(char* data, std::size_t size, std::size_t count, void* manager);

    /// The handle, reset and reused for every transfer.
    CURL* curl;

    /// Body of the last request's or upload's answer, not zero-terminated. Valid until the next
    /// operation starts.
    std::vector<char> responseBuffer;

    /// Folder of the current download.
    std::string downloadDir;

    /// Name announced for the current or last download.
    std::string downloadFileName;

    /// The partial file while a download is running, otherwise null.
    std::FILE* downloadStream = nullptr;
};

}  // namespace folium::tavro
