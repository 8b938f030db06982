#include "faults/fault_syntax.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "faults/fault_keys.h"

namespace tavro::service {

namespace {

std::string operationNames() {
    std::string names;
    for (const OperationDescription& operation : allOperations())
        names += std::string(names.empty() ? "" : ", ") + operation.name;
    return names;
}

Operation operationNamed(const std::string& name) {
    for (const OperationDescription& operation : allOperations()) {
        if (operation.name == name)
            return operation.operation;
    }
    throw std::invalid_argument("there is no operation \"" + name + "\", only " + operationNames());
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

}  // namespace

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
    const auto json = nlohmann::json::parse(text, nullptr, false);
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
