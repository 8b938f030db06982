#include "tavroctl/service_url.h"

#include "account/service_failure.h"
#include "tavroserver.h"

namespace tavro::tools {

std::string serviceUrl() {
    const TavroServer reader("");  // reads the settings
    const std::size_t scheme = TavroServer::baseApiUrl.find("://");
    return (scheme == std::string::npos ? "http" : TavroServer::baseApiUrl.substr(0, scheme)) +
           "://" + apiAddress();
}

}  // namespace tavro::tools
