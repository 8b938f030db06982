#include "support/raw_curl.h"

#include "posix/files.h"
#include "support/require.h"
#include "transport/header_list.h"

// libcurl deprecates its form calls, with which the library sends.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace bench {

namespace {

/// A form for libcurl.
class Form {
public:
    explicit Form(const RawCurl::Fields& fields) {
        for (const auto& [name, value] : fields)
            curl_formadd(&first, &last_, CURLFORM_COPYNAME, name.c_str(), CURLFORM_COPYCONTENTS,
                         value.c_str(), CURLFORM_END);
    }
    ~Form() { curl_formfree(first); }
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    void addFile(const std::string& path) {
        curl_formadd(&first, &last_, CURLFORM_COPYNAME, "file", CURLFORM_FILE, path.c_str(),
                     CURLFORM_CONTENTTYPE, "text/plain", CURLFORM_END);
    }

    curl_httppost* first = nullptr;

private:
    curl_httppost* last_ = nullptr;
};

std::size_t append(char* data, std::size_t size, std::size_t count, void* text) {
    static_cast<std::string*>(text)->append(data, size * count);
    return size * count;
}

void setFollowing(CURL* curl) {
    curl_easy_setopt(curl, CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_AUTOREFERER, 1L);
}

void perform(CURL* curl, const std::string& url, int port) {
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_PORT, long{port});
    require(curl_easy_perform(curl) == CURLE_OK, "libcurl transfers");
}

}  // namespace

RawCurl::RawCurl() : curl_(curl_easy_init()) {}

const std::string& RawCurl::request(const std::string& url, int port, const std::string& body) {
    using folium::tavro::append;
    answer_.clear();
    folium::tavro::HeaderList headers;
    append(headers, "Content-Type: application/xml; charset=utf-8");
    append(headers, ("SOAPAction: " + url).c_str());
    append(headers, "Accept: text/xml");
    CURL* const curl = curl_.get();
    curl_easy_reset(curl);
    setFollowing(curl);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, 60L);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &bench::append);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer_);
    curl_easy_setopt(curl, CURLOPT_POST, 1L);
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.c_str());
    perform(curl, url, port);
    return answer_;
}

const std::string& RawCurl::upload(const std::string& url, int port, const Fields& fields,
                                   const std::string& path) {
    answer_.clear();
    Form form(fields);
    form.addFile(path);
    CURL* const curl = curl_.get();
    curl_easy_reset(curl);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &append);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer_);
    curl_easy_setopt(curl, CURLOPT_POST, 1L);
    curl_easy_setopt(curl, CURLOPT_HTTPPOST, form.first);
    perform(curl, url, port);
    return answer_;
}

void RawCurl::download(const std::string& url, int port, const Fields& fields,
                       const std::string& path) const {
    const Form form(fields);
    const posix::Stream file(std::fopen(path.c_str(), "w+"));
    require(file != nullptr, path + " opens");
    CURL* const curl = curl_.get();
    curl_easy_reset(curl);
    setFollowing(curl);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, file.get());  // to which libcurl writes by itself
    curl_easy_setopt(curl, CURLOPT_POST, 1L);
    curl_easy_setopt(curl, CURLOPT_HTTPPOST, form.first);
    perform(curl, url, port);
}

}  // namespace bench

#pragma GCC diagnostic pop
