#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench {

/// The library's three transfers, option by option, as calls of libcurl and nothing else. They
/// throw when libcurl fails.
class RawCurl {
public:
    using Fields = std::vector<std::pair<std::string, std::string>>;

    RawCurl();

    /// Posts `body`. @return the answer, valid until the next transfer.
    const std::string& request(const std::string& url, int port, const std::string& body);

    /// Posts a form of `fields` and the file `path`. @return the answer, likewise.
    const std::string& upload(const std::string& url, int port, const Fields& fields,
                              const std::string& path);

    /// Posts a form of `fields` and writes the answer to the file `path`.
    void download(const std::string& url, int port, const Fields& fields,
                  const std::string& path) const;

private:
    struct Cleanup {
        void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
    };
    std::unique_ptr<CURL, Cleanup> curl_;
    std::string answer_;  ///< keeps its memory, as the library's buffer does
};

}  // namespace bench
