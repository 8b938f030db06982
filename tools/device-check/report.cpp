#include "device-check/report.h"

#include <cstdio>

namespace tavro::device_check {

namespace {

const char* wordFor(Status status) {
    switch (status) {
        case Status::Ok:
            return "ok";
        case Status::Skipped:
            return "skipped";
        case Status::Wrong:
            break;
    }
    return "wrong";
}

/// `text`, which may come from anywhere, in printable ASCII: harmless in a terminal and in JSON.
std::string printable(std::string text) {
    for (char& character : text)
        if (character < ' ' || character > '~')
            character = character == '\n' ? ' ' : '?';
    return text;
}

/// `text`, which is printable, as a JSON string.
std::string quoted(const std::string& text) {
    std::string json = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\')
            json += '\\';
        json += character;
    }
    return json + '"';
}

std::string asLine(const Check& check, const Result& result) {
    std::string line = wordFor(result.status);
    line.resize(9, ' ');
    line += std::string(check.name) + ": " + printable(result.found);
    if (result.status != Status::Wrong)
        return line;
    line += std::string("; this breaks: ") + check.breaks;
    return *check.advice == 0 ? line : line + "; what to do: " + check.advice;
}

std::string asObject(const Check& check, const Result& result) {
    std::string json = "{\"check\":" + quoted(check.name) +
                       ",\"status\":" + quoted(wordFor(result.status)) +
                       ",\"found\":" + quoted(printable(result.found));
    if (result.status == Status::Wrong)
        json += ",\"breaks\":" + quoted(check.breaks) + ",\"advice\":" + quoted(check.advice);
    return json + "}";
}

}  // namespace

void Report::add(const Check& check, const Result& result) {
    if (result.status == Status::Wrong)
        ++wrong_;
    if (asJson_) {
        json_ += (json_.empty() ? "" : ",\n") + asObject(check, result);
        return;
    }
    std::puts(asLine(check, result).c_str());
    std::fflush(stdout);
}

void Report::finish() const {
    if (asJson_)
        std::printf("{\"wrong\":%d,\"checks\":[\n%s]}\n", wrong_, json_.c_str());
    else
        std::printf(wrong_ == 0 ? "Nothing is wrong.\n" : "Wrong: %d\n", wrong_);
}

}  // namespace tavro::device_check
