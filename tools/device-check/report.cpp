#include "device-check/check.h"

namespace tavro::device_check {

namespace {

std::string wordFor(char status) {
    return status == 'o' ? "ok" : status == 's' ? "skipped" : "wrong";
}

/// `text`, which may come from anywhere, in printable ASCII: harmless in a terminal and in JSON.
std::string printable(std::string text) {
    for (char& character : text)
        if (character < ' ' || character > '~')
            character = character == '\n' ? ' ' : '?';
    return text;
}

/// `text` as a JSON string.
std::string quoted(const std::string& text) {
    std::string json = "\"";
    for (const char character : printable(text))
        json += (character == '"' || character == '\\' ? "\\" : "") + std::string(1, character);
    return json + '"';
}

}  // namespace

std::string asLine(const Check& check, const Result& result) {
    std::string line = wordFor(result.status);
    line.resize(9, ' ');
    line += std::string(check.name) + ": " + printable(result.found);
    if (result.status != 'w')
        return line;
    line += std::string("; this breaks: ") + check.breaks;
    return *check.advice == 0 ? line : line + "; what to do: " + check.advice;
}

std::string asObject(const Check& check, const Result& result) {
    std::string json = "{\"check\":" + quoted(check.name) +
                       ",\"status\":" + quoted(wordFor(result.status)) +
                       ",\"found\":" + quoted(result.found);
    if (result.status == 'w')
        json += ",\"breaks\":" + quoted(check.breaks) + ",\"advice\":" + quoted(check.advice);
    return json + "}";
}

}  // namespace tavro::device_check
