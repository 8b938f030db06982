#include "tavroserver.h"

using folium::tavro::CurlManager;

TavroServer::TavroServer(const std::string& deviceIdentifier)
    : curlManager(std::make_unique<CurlManager>()),
      parser(std::make_unique<XMLParser>()),
      deviceId(deviceIdentifier) {
    parser->init("utf-8");
    LoadServerConnectionData();
}

TavroServer::~TavroServer() {
    curlManager.reset();
    parser.reset();
}

const std::vector<BookDescription>& TavroServer::getAddedBooks() const {
    return parser->addedItems;
}

const std::vector<BookDescription>& TavroServer::getDeletedBooks() const {
    return parser->deletedItems;
}

const std::vector<char>& TavroServer::getLastXMLAnswer() const {
    return curlManager->responseBuffer;
}
