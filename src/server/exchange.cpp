#include "server/exchange.h"

#include "tavroserver.h"

namespace exchange {

bool send(folium::tavro::CurlManager& manager, const char* method, const std::string& body) {
    manager.sendRequest(TavroServer::baseApiUrl + method, TavroServer::apiPort, body);
    return !manager.responseBuffer.empty();
}

std::optional<Answers> readAnswer(const folium::tavro::CurlManager& manager, XMLParser& parser) {
    const std::vector<char>& answer = manager.responseBuffer;
    if (answer.empty())
        return std::nullopt;
    parser.init("utf-8");
    if (!parser.parse(answer.data(), static_cast<unsigned>(answer.size())))
        return std::nullopt;
    if (parser.answers.empty())
        return std::nullopt;
    return parser.answers;
}

std::optional<Answers> ask(folium::tavro::CurlManager& manager, XMLParser& parser,
                           const char* method, const std::string& body) {
    send(manager, method, body);
    return readAnswer(manager, parser);
}

bool assignAnswer(const Answers& answers, const char* name, std::string& member) {
    const auto answer = answers.find(name);
    if (answer == answers.end())
        return false;
    member = answer->second;
    return true;
}

void assignAnswers(const Answers& answers, std::initializer_list<AnswerTarget> targets) {
    for (const AnswerTarget& target : targets)
        assignAnswer(answers, target.name, target.member);
}

void dumpAnswer(std::FILE* stream, std::string_view before, const std::vector<char>& answer,
                std::string_view after) {
    std::fwrite(before.data(), 1, before.size(), stream);
    std::fwrite(answer.data(), 1, answer.size(), stream);
    std::fwrite(after.data(), 1, after.size(), stream);
}

}  // namespace exchange
