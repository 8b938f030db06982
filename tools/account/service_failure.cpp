#include "account/service_failure.h"

#include <curl/curl.h>

#include <memory>

#include "tavroserver.h"

namespace tavro::tools {

namespace {

constexpr long connect_seconds = 10;

/// The host of `url` with `port`: the library overrides the port of an address by its own setting.
std::string hostAndPort(const std::string& url, int port) {
    const std::size_t scheme = url.find("://");
    const std::string rest = scheme == std::string::npos ? url : url.substr(scheme + 3);
    const std::string authority = rest.substr(0, rest.find('/'));
    const std::size_t colon = authority.find(':', authority.rfind(']') + 1);
    return authority.substr(0, colon) + ":" + std::to_string(port);
}

/// What to try when the service does not know the device.
constexpr const char* renewal = "run 'tavroctl register --renew', which registers the device anew";

}  // namespace

bool isUnknownDevice(const std::string& code) {
    return code == "2005" || code == "2006";  // another device's token, a token of none
}

Failure serviceFailure(const TavroServer& server, const std::string& what,
                       const std::string& address, const std::string& advice) {
    if (!server.lastError.empty()) {
        const std::string reason = server.lastMessage.empty() ? "" : ": " + server.lastMessage;
        Failure failure(what + ": the service answered " + server.lastError + reason,
                        isUnknownDevice(server.lastError) ? renewal : advice);
        failure.code = server.lastError;
        failure.message = server.lastMessage;
        return failure;
    }
    if (!server.getLastXMLAnswer().empty())
        return Failure(
            what + ": the answer of " + address + " cannot be read",
            "put TAVRO_LOG=FILE TAVRO_LOG_LEVEL=4 before the same command, which keeps the answer "
            "in FILE");
    return noAnswer(what, address);
}

Failure noAnswer(const std::string& what, const std::string& address) {
    return Failure(what + ": no answer from " + address + ": is the service running?",
                   "see the address in use with 'tavroctl status', change it with 'tavroctl setup "
                   "--service', see the exchange with --trace");
}

bool isDownloadPageReachable() {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> attempt(curl_easy_init(),
                                                                      curl_easy_cleanup);
    CURL* const curl = attempt.get();
    curl_easy_setopt(curl, CURLOPT_URL, TavroServer::downloadUrl.c_str());
    curl_easy_setopt(curl, CURLOPT_PORT, long{TavroServer::downloadPort});
    curl_easy_setopt(curl, CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, connect_seconds);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    return curl_easy_perform(curl) == CURLE_OK;
}

std::string apiAddress() {
    return hostAndPort(TavroServer::baseApiUrl, TavroServer::apiPort);
}

std::string uploadAddress() {
    return hostAndPort(TavroServer::uploadUrl, TavroServer::uploadPort);
}

std::string downloadAddress() {
    return hostAndPort(TavroServer::downloadUrl, TavroServer::downloadPort);
}

}  // namespace tavro::tools
