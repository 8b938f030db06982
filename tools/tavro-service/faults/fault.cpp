#include "faults/fault.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "text/hex.h"

namespace tavro::service {

namespace {

using Milliseconds = std::chrono::milliseconds;

/// One setting of a fault as it was given.
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
};

/// Sets in `fault` what `setting` says.
void set(Fault& fault, const Setting& setting) {
    constexpr int an_hour = 3600 * 1000;
    constexpr int most = 1'000'000'000;
    using Setter = void (*)(Fault&, const Setting&);
    static const std::map<std::string, Setter> setters = {
        {"delay", [](Fault& f, const Setting& s) { f.delay = Milliseconds(s.number(0, an_hour)); }},
        {"code", [](Fault& f, const Setting& s) { f.resultCode = s.value; }},
        {"status", [](Fault& f, const Setting& s) { f.httpStatus = s.number(200, 599); }},
        {"body", [](Fault& f, const Setting& s) { f.body = s.value; }},
        {"body-hex", [](Fault& f, const Setting& s) { f.body = s.bytes(); }},
        {"cut", [](Fault& f, const Setting& s) { f.cutAfter = std::size_t(s.number(0, most)); }},
        {"malformed", [](Fault& f, const Setting& s) { f.malformed = s.flag(); }},
        {"close", [](Fault& f, const Setting& s) { f.closeConnection = s.flag(); }},
        {"filename", [](Fault& f, const Setting& s) { f.fileName = s.value; }},
        {"times", [](Fault& f, const Setting& s) { f.times = s.number(0, most); }},
    };
    const auto setter = setters.find(setting.key);
    if (setter == setters.end())
        throw std::invalid_argument("a fault has no key \"" + setting.key + "\"");
    setter->second(fault, setting);
}

std::string operationNames() {
    std::string names;
    for (const Operation operation : all_operations)
        names += std::string(names.empty() ? "" : ", ") + name(operation);
    return names;
}

Operation toOperation(const std::string& text) {
    if (const auto operation = operationNamed(text))
        return *operation;
    throw std::invalid_argument("there is no operation \"" + text + "\", only " + operationNames());
}

/// The bytes of the file that a "body-file" names.
std::string readBodyFile(const Setting& setting) {
    std::ifstream stream(setting.value, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.good() && !stream.eof())
        throw setting.wrong("the file cannot be read");
    return bytes;
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

}  // namespace

NamedFault parseFault(const std::string& text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos)
        throw std::invalid_argument("\"" + text +
                                    "\" is no fault: OPERATION:key=value,... is wanted");
    return parseFault(text.substr(0, colon), split(text.substr(colon + 1)));
}

NamedFault parseFault(const std::string& operation, const std::vector<std::string>& settings) {
    NamedFault fault{toOperation(operation), {}};
    if (settings.empty())
        throw std::invalid_argument("a fault of " + operation +
                                    " needs a key: say what is to happen, as code=2001");
    for (const std::string& text : settings) {
        const std::size_t equals = std::min(text.find('='), text.size());
        const std::size_t value = std::min(equals + 1, text.size());
        const Setting setting{text.substr(0, equals), text.substr(value)};
        if (setting.key == "body-file")
            fault.second.body = readBodyFile(setting);
        else
            set(fault.second, setting);
    }
    return fault;
}

std::string faultToJson(const NamedFault& named) {
    const auto& [operation, fault] = named;
    nlohmann::ordered_json json = {{"operation", name(operation)}};
    if (fault.delay.count() > 0)
        json["delay"] = fault.delay.count();
    if (fault.resultCode)
        json["code"] = *fault.resultCode;
    if (fault.httpStatus)
        json["status"] = *fault.httpStatus;
    if (fault.body)
        json["body-hex"] = hexEncode(*fault.body);
    if (fault.cutAfter)
        json["cut"] = *fault.cutAfter;
    if (fault.malformed)
        json["malformed"] = true;
    if (fault.closeConnection)
        json["close"] = true;
    if (fault.fileName)
        json["filename"] = *fault.fileName;
    json["times"] = fault.times;
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

NamedFault faultFromJson(const std::string& text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object() || !json.contains("operation") || !json["operation"].is_string())
        throw std::invalid_argument("a JSON object with an \"operation\" is wanted");
    NamedFault fault{toOperation(json["operation"]), {}};
    for (const auto& [key, value] : json.items()) {
        if (key != "operation")
            set(fault.second, {key, value.is_string() ? value.get<std::string>() : value.dump()});
    }
    return fault;
}

std::string faultHelp() {
    return "Operations: " + operationNames() +
           "\nKeys of a fault:\n"
           "  delay=MS          wait before the answer\n"
           "  code=CODE         answer with this result code; nothing is done unless it is a "
           "success\n"
           "  status=N          HTTP status of the answer\n"
           "  body=TEXT         exact body of the answer; body= for an empty one\n"
           "  body-hex=DIGITS   the same as hexadecimal digits\n"
           "  body-file=PATH    the same from a file\n"
           "  cut=N             announce the whole body, send N bytes, close the connection\n"
           "  malformed         answer with XML that is not well-formed\n"
           "  close             close the connection without an answer; nothing is done\n"
           "  filename=TEXT     announce this name for a download; filename= for no name at all\n"
           "  times=N           for the next N requests (default: until cleared)";
}

void FaultQueue::add(Operation operation, Fault fault) {
    const std::lock_guard lock(mutex_);
    auto& waiting = faults_[operation];
    if (!waiting.empty() && waiting.back().times == 0)
        waiting.pop_back();
    waiting.push_back(std::move(fault));
}

Fault FaultQueue::take(Operation operation) {
    const std::lock_guard lock(mutex_);
    auto& waiting = faults_[operation];
    if (waiting.empty())
        return {};
    Fault fault = waiting.front();
    if (fault.times > 0 && --waiting.front().times == 0)
        waiting.pop_front();
    return fault;
}

void FaultQueue::clear() {
    const std::lock_guard lock(mutex_);
    faults_.clear();
}

std::vector<NamedFault> FaultQueue::pending() const {
    const std::lock_guard lock(mutex_);
    std::vector<NamedFault> pending;
    for (const auto& [operation, waiting] : faults_) {
        for (const Fault& fault : waiting)
            pending.emplace_back(operation, fault);
    }
    return pending;
}

}  // namespace tavro::service
