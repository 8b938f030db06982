#include <charconv>
#include <stdexcept>
#include <string_view>

#include "faults/fault_syntax.h"
#include "http/body_reader.h"
#include "http/control_json.h"
#include "http/pages.h"

namespace tavro::service {

namespace {

/// A request to one of the pages below /control/.
struct Command {
    const PageContext& context;
    const httplib::Request& request;
    std::string body;
};

/// Each of `values` in JSON.
template <typename Values>
Json listOf(const Values& values) {
    Json list = Json::array();
    for (const auto& value : values)
        list.push_back(toJson(value));
    return list;
}

Json books(const Command& command) {
    return listOf(command.context.api.books());
}

Json devices(const Command& command) {
    return listOf(command.context.api.devices());
}

Json accounts(const Command& command) {
    return listOf(command.context.api.accounts());
}

Json faults(const Command& command) {
    Json list = Json::array();
    for (const NamedFault& fault : command.context.faults.pending())
        list.push_back(Json::parse(faultToJson(fault)));
    return list;
}

Json status(const Command& command) {
    const RequestNumbers numbers = command.context.log.numbers();
    return {{"books", command.context.api.bookCount()},
            {"requests", numbers.count},
            {"lastRequest", numbers.last},
            {"started", timeText(command.context.started)},
            {"faults", faults(command)}};
}

/// The number in the parameter `name` of the address; 0 if there is none.
std::uint64_t numberIn(const httplib::Request& request, const char* name) {
    const std::string text = request.get_param_value(name);
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (!text.empty() && (error != std::errc() || stop != end))
        throw std::invalid_argument("\"" + text + "\" is no number for \"" + name + "\"");
    return number;
}

Json requests(const Command& command) {
    std::optional<Operation> operation;
    if (command.request.has_param("operation"))
        operation = operationNamed(command.request.get_param_value("operation"));
    return listOf(command.context.log.requests(numberIn(command.request, "after"), operation));
}

Json forgetRequests(const Command& command) {
    command.context.log.clear();
    return status(command);
}

Json addFault(const Command& command) {
    auto [operation, fault] = faultFromJson(command.body);
    command.context.faults.add(operation, std::move(fault));
    return status(command);
}

Json clearFaults(const Command& command) {
    command.context.faults.clear();
    return status(command);
}

Json faultSyntax(const Command&) {
    Json operations = Json::array();
    for (const OperationDescription& operation : allOperations())
        operations.push_back(operation.name);
    Json keys = Json::array();
    for (const FaultKeyHelp& key : faultKeyHelp())
        keys.push_back({{"name", key.name}, {"argument", key.argument}, {"help", key.help}});
    return {{"operations", std::move(operations)}, {"keys", std::move(keys)}};
}

using CarryOut = Json (*)(const Command& command);

/// Everything that may be asked below /control/.
const struct {
    std::string_view method;
    const char* path;
    CarryOut carryOut;
} control_pages[] = {
    {"GET", "/control/status", status},         {"GET", "/control/books", books},
    {"GET", "/control/devices", devices},       {"GET", "/control/accounts", accounts},
    {"GET", "/control/requests", requests},     {"DELETE", "/control/requests", forgetRequests},
    {"GET", "/control/faults", faults},         {"POST", "/control/faults", addFault},
    {"DELETE", "/control/faults", clearFaults}, {"GET", "/control/fault-syntax", faultSyntax},
};

/// Sends as `response` what `carryOut` makes of `command`, or what is wrong with it.
void answer(CarryOut carryOut, const Command& command, httplib::Response& response) {
    try {
        const Json json = carryOut(command);
        response.set_header("Cache-Control", "no-store");
        response.set_content(json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n",
                             "application/json");
    } catch (const std::invalid_argument& error) {
        response.status = 400;
        response.set_content(error.what(), "text/plain; charset=utf-8");
    }
}

}  // namespace

void addControlPages(const PageContext& context) {
    httplib::Server& server = context.server.pages();
    for (const auto& page : control_pages) {
        const auto plain = [context, carryOut = page.carryOut](const auto& request,
                                                               auto& response) {
            answer(carryOut, {context, request, ""}, response);
        };
        const auto withBody = [context, carryOut = page.carryOut](
                                  const auto& request, auto& response, const auto& reader) {
            const std::string body = readBody(request, reader, context.maximumBody);
            answer(carryOut, {context, request, body}, response);
        };
        if (page.method == "GET")
            server.Get(page.path, plain);
        else if (page.method == "DELETE")
            server.Delete(page.path, plain);
        else
            server.Post(page.path, withBody);
    }
}

}  // namespace tavro::service
