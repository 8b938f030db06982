#pragma once

#include <curl/curl.h>

#include <string>

#include "curlmanager.h"

namespace folium::tavro {

/// A multipart form in the making, owned for as long as the transfer that sends it.
class MultipartForm {
public:
    /// Makes a form with one part for each of `fields`, in their order.
    explicit MultipartForm(const CurlManager::FormFields& fields);
    ~MultipartForm();
    MultipartForm(const MultipartForm&) = delete;
    MultipartForm& operator=(const MultipartForm&) = delete;

    /// Adds the part "file" with the content of the file `path`, read while it is sent.
    void addFile(const std::string& path);

    /// Sets the form as the body of the next transfer of `curl`.
    CURLcode attachTo(CURL* curl) const;

private:
    curl_httppost* first_ = nullptr;
    curl_httppost* last_ = nullptr;
};

}  // namespace folium::tavro
