#pragma once

#include <array>
#include <cstdio>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "curlmanager.h"
#include "xmlparser.h"

/// The road that every request of the service shares: format the body, send it, read the answer.
namespace exchange {

/// Texts of an answer by element name.
using Answers = std::map<std::string, std::string>;

/// Fills the request template `format` with `values`, unescaped. A body longer than the buffer of
/// the device API is cut silently.
template <typename... Values>
std::string formatBody(const char* format, const Values&... values) {
    std::array<char, 2048> buffer;
    std::snprintf(buffer.data(), buffer.size(), format, values.c_str()...);
    return buffer.data();
}

/// Posts `body` as request `method` of the device API and waits for the answer, which lands in the
/// `responseBuffer` of `manager`. @return whether an answer came at all.
bool send(folium::tavro::CurlManager& manager, const char* method, const std::string& body);

/// Reads the answer in the `responseBuffer` of `manager` with `parser`.
///
/// @return a copy of the answer's texts; nothing when the answer is empty, is not well-formed or
///     holds no text.
std::optional<Answers> readAnswer(const folium::tavro::CurlManager& manager, XMLParser& parser);

/// `send`, then `readAnswer`.
std::optional<Answers> ask(folium::tavro::CurlManager& manager, XMLParser& parser,
                           const char* method, const std::string& body);

/// Copies the text of the element `name` into `member`, which stays as it is without one.
/// @return whether the answer has the element.
bool assignAnswer(const Answers& answers, const char* name, std::string& member);

/// An element of an answer and the member that takes its text.
struct AnswerTarget {
    const char* name;
    std::string& member;
};

/// `assignAnswer` for each of `targets`, in order.
void assignAnswers(const Answers& answers, std::initializer_list<AnswerTarget> targets);

/// Writes exactly the bytes of `answer`, whatever they are, between `before` and `after`.
void dumpAnswer(std::FILE* stream, std::string_view before, const std::vector<char>& answer,
                std::string_view after);

}  // namespace exchange
