#include "faults/fault_keys.h"

#include <charconv>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "text/hex.h"

namespace tavro::service {

namespace {

using Json = nlohmann::json;

constexpr int one_hour = 3600 * 1000;
constexpr int largest_number = 1'000'000'000;

template <typename Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json();
}

Json orNull(bool flag) {
    return flag ? Json(true) : Json();
}

}  // namespace

std::invalid_argument Setting::wrong(const std::string& wanted) const {
    return std::invalid_argument("the fault \"" + key + "=" + value + "\" cannot be: " + wanted);
}

int Setting::number(int lowest, int highest) const {
    int number = 0;
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || stop != end || number < lowest || number > highest)
        throw wrong("a number from " + std::to_string(lowest) + " to " + std::to_string(highest) +
                    " is wanted");
    return number;
}

bool Setting::flag() const {
    if (!value.empty() && value != "true" && value != "false")
        throw wrong("true or false is wanted");
    return value != "false";
}

std::string Setting::bytes() const {
    if (auto bytes = hexDecode(value))
        return *bytes;
    throw wrong("pairs of hexadecimal digits are wanted");
}

std::string Setting::fileContent() const {
    std::ifstream stream(value, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.good() && !stream.eof())
        throw wrong("the file cannot be read");
    return bytes;
}

const std::vector<FaultKey>& faultKeys() {
    using F = Fault;
    using S = Setting;
    static const std::vector<FaultKey> keys = {
        {"delay", "=MS", "wait before the answer",
         [](F& f, const S& s) { f.delay = std::chrono::milliseconds(s.number(0, one_hour)); },
         [](const F& f) { return f.delay.count() > 0 ? Json(f.delay.count()) : Json(); }},
        {"code", "=CODE", "answer with this result code; nothing is done unless it is a success",
         [](F& f, const S& s) { f.resultCode = s.value; },
         [](const F& f) { return orNull(f.resultCode); }},
        {"status", "=N", "HTTP status of the answer",
         [](F& f, const S& s) { f.httpStatus = s.number(200, 599); },
         [](const F& f) { return orNull(f.httpStatus); }},
        {"body", "=TEXT", "exact body of the answer; body= for an empty one",
         [](F& f, const S& s) { f.body = s.value; }, nullptr},
        {"body-hex", "=DIGITS", "the same as hexadecimal digits",
         [](F& f, const S& s) { f.body = s.bytes(); },
         [](const F& f) { return f.body ? Json(hexEncode(*f.body)) : Json(); }},
        {"body-file", "=PATH", "the same from a file",
         [](F& f, const S& s) { f.body = s.fileContent(); }, nullptr, true},
        {"cut", "=N", "announce the whole body, send N bytes, close the connection",
         [](F& f, const S& s) { f.cutAfter = std::size_t(s.number(0, largest_number)); },
         [](const F& f) { return orNull(f.cutAfter); }},
        {"malformed", "", "answer with XML that is not well-formed",
         [](F& f, const S& s) { f.malformed = s.flag(); },
         [](const F& f) { return orNull(f.malformed); }},
        {"close", "", "close the connection without an answer; nothing is done",
         [](F& f, const S& s) { f.closeConnection = s.flag(); },
         [](const F& f) { return orNull(f.closeConnection); }},
        {"filename", "=TEXT", "announce this name for a download; filename= for no name at all",
         [](F& f, const S& s) { f.fileName = s.value; },
         [](const F& f) { return orNull(f.fileName); }},
        {"times", "=N", "for the next N requests (default: until cleared)",
         [](F& f, const S& s) { f.times = s.number(0, largest_number); },
         [](const F& f) { return Json(f.times); }},
    };
    return keys;
}

}  // namespace tavro::service
