#include "http/device_pages.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <optional>
#include <regex>
#include <string>
#include <utility>

#include "api/result.h"
#include "faults/fault.h"
#include "faults/fault_syntax.h"
#include "http/body_reader.h"

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

/// Hands `answer` with the body `body` to the HTTP library as `response`, which sends it piece by
/// piece. After `cut` bytes of the body it ends the connection, if that is set.
void send(const DeviceResponse& answer, const Content& body, std::optional<std::size_t> cut,
          httplib::Response& response) {
    response.status = answer.status;
    // Last on its line and without quotes: a device takes everything up to the end for the name.
    if (!answer.fileName.empty())
        response.set_header("Content-Disposition", "attachment; filename=" + answer.fileName);
    if (body.size == 0)
        return response.set_content("", answer.contentType);
    response.set_content_provider(
        body.size, answer.contentType,
        [body, end = cut.value_or(body.size)](std::size_t offset, std::size_t length,
                                              httplib::DataSink& sink) {
            std::array<char, 65536> buffer;
            const std::size_t left = end - std::min(end, offset);
            const std::size_t wanted = std::min({length, left, buffer.size()});
            const std::size_t got = wanted ? body.read(offset, buffer.data(), wanted) : 0;
            return got > 0 && sink.write(buffer.data(), got);
        });
}

}  // namespace

DevicePages::DevicePages(HttpServer& server, DeviceApi& api, FaultQueue& faults, RequestLog& log,
                         Settings settings)
    : server_(server), api_(api), faults_(faults), log_(log), settings_(settings) {
    for (const OperationDescription& description : allOperations()) {
        server_.pages().Post(exactly(description.path()),
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
        server_.shutDownConnections(request.remote_port);
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
