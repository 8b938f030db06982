#include <gtest/gtest.h>

#include "support/device_root.h"
#include "tavroserver.h"

TEST(ConnectionSettings, ComeFromTheFileWithThePartnersDefaults) {
    EXPECT_EQ(TavroServer::baseApiUrl, "http://api.tavro.example/IOSCloudManagement.svc/");
    EXPECT_EQ(TavroServer::uploadUrl, "http://www.tavro.example/UploadContent.aspx");
    EXPECT_EQ(TavroServer::downloadUrl, "http://www.tavro.example/DownloadContent.aspx");
    const DeviceRoot device;
    const std::string twelfth = "5A1C7E20-9B3D-4F62-8E07-2C4D6B19A0F3";
    const std::string sixteenth = "C07D3A95-61E2-4B7A-9F14-8A2E5D0C6B41";
    const auto urls = [] {
        return TavroServer::baseApiUrl + " " + TavroServer::uploadUrl + " " +
               TavroServer::downloadUrl;
    };
    const std::string builtIn = urls();
    const struct {
        const char* partner;
        const char* settings;
        int api, upload, download;
        std::string urls, shop, name;
    } cases[] = {{"7", "apiPort=1\nshopID=x\n", 80, 1510, 1510, builtIn, sixteenth, "Zabrin"},
                 {"12", "", 80, 1500, 1500, builtIn, twelfth, "Zabrin"},
                 {"16",
                  "apiPort=1\nuploadPort=2\ndownloadPort=3\nshopID=x\ndefaultshopName=s\n"
                  "baseApiUrl=a\nuploadUrl=u\ndownloadUrl=d\n",
                  1, 2, 3, "a u d", "x", "s"},
                 {"16", "# nothing\n", 80, 1510, 1510, builtIn, sixteenth, "Zabrin"}};
    for (const auto& expected : cases) {
        writeFile(device_paths::serverSettings(), expected.settings);
        ::setenv("TAVRO_PARTNER", expected.partner, 1);
        const TavroServer server("SN");
        EXPECT_EQ(TavroServer::apiPort, expected.api) << expected.partner;
        EXPECT_EQ(TavroServer::uploadPort, expected.upload) << expected.partner;
        EXPECT_EQ(TavroServer::downloadPort, expected.download) << expected.partner;
        EXPECT_EQ(urls(), expected.urls) << expected.partner;
        EXPECT_EQ(TavroServer::shopID, expected.shop) << expected.partner;
        EXPECT_EQ(TavroServer::defaultshopName, expected.name);
    }
    // An unreadable file changes nothing, not even to defaults.
    std::filesystem::remove(device_paths::serverSettings());
    std::filesystem::create_directory(device_paths::serverSettings());
    TavroServer::apiPort = 4;
    const TavroServer server("SN");
    EXPECT_EQ(TavroServer::apiPort, 4);
}
