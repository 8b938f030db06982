#include "support/service_fixture.h"

#include <cstdlib>

ServiceFixture::ServiceFixture() {
    ::setenv("TAVRO_PARTNER", "0", 1);
    const std::string host = "http://127.0.0.1";
    TavroServer::baseApiUrl = host + "/IOSCloudManagement.svc/";
    TavroServer::uploadUrl = host + "/UploadContent.aspx";
    TavroServer::downloadUrl = host + "/DownloadContent.aspx";
    TavroServer::apiPort = TavroServer::uploadPort = TavroServer::downloadPort = service.port();
}
