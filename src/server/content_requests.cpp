#include "server/exchange.h"
#include "server/result_codes.h"
#include "tavroserver.h"

using exchange::assignAnswers;
using folium::tavro::CurlManager;

namespace {

/// The form of a content request. The content pages spell the field "SessionId" where the device
/// API has "SessionID".
CurlManager::FormFields contentFields(const TavroServer& server, const std::string& itemId) {
    return {{"Token", server.token}, {"SessionId", server.sessionId}, {"ItemId", itemId}};
}

}  // namespace

int TavroServer::syncWithCloud(const std::string& lastSyncTime) {
    const std::string body =
        exchange::formatBody(syncWithCloudRequest, sessionId, token, lastSyncTime);
    lastError.clear();
    lastMessage.clear();
    serverTime.clear();
    // The service spells its method so.
    if (!exchange::send(*curlManager, "SysnWithCloud", body))
        return 1;
    exchange::dumpAnswer(stderr, "", curlManager->responseBuffer, "\n");
    const auto answers = exchange::readAnswer(*curlManager, *parser);
    if (!answers)
        return 1;
    assignAnswers(
        *answers,
        {{"Error", lastError}, {"Message", lastMessage}, {"CurrentServerTime", serverTime}});
    return 0;
}

const std::string& TavroServer::downloadContent(const std::string& itemId,
                                                const std::string& destination) {
    return curlManager->downloadFile(downloadUrl, downloadPort, contentFields(*this, itemId),
                                     destination, itemId);
}

int TavroServer::uploadContent(const std::string& itemId, const std::string& filePath) {
    lastError.clear();
    lastMessage.clear();
    curlManager->uploadFile(uploadUrl, uploadPort, contentFields(*this, itemId), filePath);
    if (curlManager->responseBuffer.empty())
        return 1;
    exchange::dumpAnswer(stdout, "", curlManager->responseBuffer, "\n");
    const auto answers = exchange::readAnswer(*curlManager, *parser);
    if (!answers)
        return 1;
    assignAnswers(*answers, {{"Error", lastError}, {"Message", lastMessage}});
    return lastError == result_codes::success ? 0 : 1;
}
