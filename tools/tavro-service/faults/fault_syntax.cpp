#include "faults/fault_syntax.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "text/text.h"

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

struct Setting {
    std::string key;
    std::string value;

    std::invalid_argument wrong(const std::string& wanted) const {
        return std::invalid_argument("the fault \"" + key + "=" + value +
                                     "\" cannot be: " + wanted);
    }

    int number(int lowest, int highest) const {
        int number = 0;
        const char* const end = value.data() + value.size();
        const auto [stop, error] = std::from_chars(value.data(), end, number);
        if (error != std::errc() || stop != end || number < lowest || number > highest)
            throw wrong("a number from " + std::to_string(lowest) + " to " +
                        std::to_string(highest) + " is wanted");
        return number;
    }

    bool flag() const {
        if (!value.empty() && value != "true" && value != "false")
            throw wrong("true or false is wanted");
        return value != "false";
    }

    std::string bytes() const {
        if (auto bytes = hexDecode(value))
            return *bytes;
        throw wrong("pairs of hexadecimal digits are wanted");
    }

    std::string fileContent() const {
        std::ifstream stream(value, std::ios::binary);
        std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        if (!stream.good() && !stream.eof())
            throw wrong("the file cannot be read");
        return bytes;
    }
};

/// All there is to say about one key of a fault.
struct FaultKey {
    const char* name;
    const char* argument;  ///< as the help shows it after the name
    const char* help;
    void (*set)(Fault& fault, const Setting& setting);
    /// Its value in JSON, null if it is not set; no function if another key stands for it there.
    nlohmann::json (*get)(const Fault& fault);
    bool onlyFromCommandLine = false;
};

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

const FaultKey* findKey(const std::string& name) {
    const auto key =
        std::find_if(faultKeys().begin(), faultKeys().end(),
                     [&](const FaultKey& candidate) { return candidate.name == name; });
    return key == faultKeys().end() ? nullptr : &*key;
}

/// Sets in `fault` what `setting` says, if its key may come from there.
void set(Fault& fault, const Setting& setting, bool fromCommandLine) {
    const FaultKey* const key = findKey(setting.key);
    if (key == nullptr || (key->onlyFromCommandLine && !fromCommandLine))
        throw std::invalid_argument("a fault has no key \"" + setting.key + "\"");
    key->set(fault, setting);
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

/// Ends the reading of JSON inside a value: writing deeply nested ones would overflow the stack.
bool refuseNested(int depth, Json::parse_event_t event, Json&) {
    const bool begins =
        event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start;
    if (begins && depth > 0)
        throw std::invalid_argument("the values of a fault are texts, numbers or flags");
    return true;
}

}  // namespace

bool hasEffect(const Fault& fault) {
    return std::any_of(faultKeys().begin(), faultKeys().end(), [&](const FaultKey& key) {
        return key.get && key.name != std::string_view("times") && !key.get(fault).is_null();
    });
}

NamedFault parseFault(const std::string& text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos)
        throw std::invalid_argument("\"" + text +
                                    "\" is no fault: OPERATION:key=value,... is wanted");
    return parseFault(text.substr(0, colon), split(text.substr(colon + 1)));
}

NamedFault parseFault(const std::string& operation, const std::vector<std::string>& settings) {
    NamedFault fault{operationNamed(operation), {}};
    if (settings.empty())
        throw std::invalid_argument("a fault of " + operation +
                                    " needs a key: say what is to happen, as code=2001");
    for (const std::string& text : settings) {
        const std::size_t equals = std::min(text.find('='), text.size());
        const std::size_t value = std::min(equals + 1, text.size());
        set(fault.second, {text.substr(0, equals), text.substr(value)}, true);
    }
    return fault;
}

std::string faultToJson(const NamedFault& fault) {
    nlohmann::ordered_json json = {{"operation", name(fault.first)}};
    for (const FaultKey& key : faultKeys()) {
        const nlohmann::json value = key.get ? key.get(fault.second) : nlohmann::json();
        if (!value.is_null())
            json[key.name] = value;
    }
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

NamedFault faultFromJson(const std::string& text) {
    const auto json = nlohmann::json::parse(text, refuseNested, false);
    if (!json.is_object() || !json.contains("operation") || !json["operation"].is_string())
        throw std::invalid_argument("a JSON object with an \"operation\" is wanted");
    NamedFault fault{operationNamed(json["operation"]), {}};
    for (const auto& [key, value] : json.items()) {
        const std::string setting = value.is_string() ? value.get<std::string>() : value.dump();
        if (key != "operation")
            set(fault.second, {key, setting}, false);
    }
    return fault;
}

std::vector<NamedFault> readFaults(const std::string& path) {
    std::ifstream stream(path);
    if (!stream)
        throw std::invalid_argument(path + ": the file cannot be read");
    std::vector<NamedFault> faults;
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        const std::string text = cleanText(line);
        if (text.empty() || text.front() == '#')
            continue;
        try {
            faults.push_back(text.front() == '{' ? faultFromJson(line) : parseFault(text));
        } catch (const std::invalid_argument& error) {
            throw std::invalid_argument(path + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    return faults;
}

std::vector<FaultKeyHelp> faultKeyHelp() {
    std::vector<FaultKeyHelp> keys;
    for (const FaultKey& key : faultKeys()) {
        if (!key.onlyFromCommandLine)
            keys.push_back({key.name, key.argument, key.help});
    }
    return keys;
}

std::string faultHelp() {
    constexpr std::size_t key_width = 18;
    std::string help = "Operations: " + operationNames() + "\nKeys of a fault:";
    for (const FaultKey& key : faultKeys()) {
        std::string column = std::string(key.name) + key.argument;
        column.resize(key_width, ' ');
        help += "\n  " + column + key.help;
    }
    return help;
}

}  // namespace tavro::service
