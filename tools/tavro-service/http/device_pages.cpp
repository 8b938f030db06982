#include "http/device_pages.h"

#include <chrono>
#include <exception>
#include <regex>
#include <string>
#include <utility>

#include "api/request_error.h"
#include "faults/fault_effect.h"
#include "http/body_reader.h"
#include "http/connections.h"
#include "http/send_response.h"

namespace tavro::service {

namespace {

using Clock = std::chrono::steady_clock;

/// `path` as a pattern of the HTTP library that matches nothing else.
std::string exactly(const std::string& path) {
    return std::regex_replace(path, std::regex("\\."), "\\.");
}

/// What the log keeps of `request` before it is read.
Request entryOf(Operation operation, const httplib::Request& request) {
    Request entry;
    entry.operation = operation;
    entry.path = request.path;
    entry.soapAction = request.get_header_value("SOAPAction");
    entry.contentType = request.get_header_value("Content-Type");
    entry.accept = request.get_header_value("Accept");
    return entry;
}

}  // namespace

DevicePages::DevicePages(HttpServer& server, DeviceApi& api, FaultQueue& faults, RequestLog& log,
                         Settings settings)
    : server_(server), api_(api), faults_(faults), log_(log), settings_(settings) {
    for (const OperationDescription& description : allOperations()) {
        server_.pages().Post(exactly(description.path),
                             [this, operation = description.operation](
                                 const auto& request, auto& response, const auto& reader) {
                                 handle(operation, request, response, reader);
                             });
    }
}

void DevicePages::handle(Operation operation, const httplib::Request& request,
                         httplib::Response& response, const httplib::ContentReader& reader) {
    const auto start = Clock::now();
    const Fault fault = faults_.take(operation);
    Request entry = entryOf(operation, request);
    DeviceResponse answered = answer(entry, request, reader, fault);
    apply(fault, answered);
    const Content body = bodyOf(answered, operation, settings_.entityReferences);
    server_.pause(fault.delay);

    // Before the client can know the answer.
    entry.faulty = hasEffect(fault);
    if (!fault.closeConnection) {
        entry.code = answered.code;
        entry.status = answered.status;
        entry.bytes = body.size;
    }
    entry.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    log_.add(std::move(entry));

    if (fault.closeConnection)
        shutDownConnections(request.local_port, request.remote_port);
    else
        send(answered, body, fault.cutAfter, response);
}

DeviceResponse DevicePages::answer(Request& entry, const httplib::Request& request,
                                   const httplib::ContentReader& reader, const Fault& fault) {
    try {
        DeviceRequest received = receive(entry.operation, request, reader);
        entry.body = received.body;
        entry.fields = received.form.fields;
        entry.fileContentType = received.form.fileContentType;
        if (!isCarriedOut(fault))
            return DeviceResponse(result::requested_fault);
        return api_.handle(received);
    } catch (const RequestError& error) {
        return DeviceResponse(error.result());
    } catch (const std::exception& error) {
        log_.report(std::string(name(entry.operation)) + ": " + error.what());
        return DeviceResponse(result::server_error);
    }
}

DeviceRequest DevicePages::receive(Operation operation, const httplib::Request& request,
                                   const httplib::ContentReader& reader) const {
    DeviceRequest received{operation, server_.url(), "", {}};
    if (request.has_header("Host"))
        received.baseUrl = "http://" + request.get_header_value("Host");
    if (descriptionOf(operation).isForm())
        received.form = readForm(request, reader, settings_.maximumBody, api_.uploads());
    else
        received.body = readBody(request, reader, settings_.maximumBody);
    return received;
}

}  // namespace tavro::service
