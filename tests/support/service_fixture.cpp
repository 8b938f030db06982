#include "support/service_fixture.h"

#include <cstdlib>

using namespace tavro::service;

namespace {

Options optionsFor(const TemporaryFolder& folder) {
    Options options;
    options.books = folder / "books";
    writeFile(options.books / "first.txt", "The first book.\n");
    writeFile(options.books / "second.txt", "The second book.\n");
    return options;
}

}  // namespace

ServiceFixture::ServiceFixture() : service(optionsFor(folder)) {
    ::setenv("TAVRO_PARTNER", "0", 1);
    const std::string host = "http://127.0.0.1";
    TavroServer::baseApiUrl = host + "/IOSCloudManagement.svc/";
    TavroServer::uploadUrl = host + "/UploadContent.aspx";
    TavroServer::downloadUrl = host + "/DownloadContent.aspx";
    TavroServer::apiPort = TavroServer::uploadPort = TavroServer::downloadPort = service.port();
}

void ServiceFixture::answer(Operation operation, const std::string& body, int times) {
    Fault fault;
    fault.body = body;
    fault.times = times;
    service.clearFaults();
    service.inject(operation, fault);
}

Request ServiceFixture::lastRequest() const {
    return service.requests().back();
}

std::string answerXml(const std::string& code, const std::string& more) {
    return "<Answer><Error>" + code + "</Error><Message>text</Message>" + more + "</Answer>";
}
