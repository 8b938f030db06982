#include <algorithm>
#include <array>
#include <regex>

#include "faults/fault_syntax.h"
#include "http/body_reader.h"
#include "http/pages.h"

namespace tavro::service {

namespace {

using Clock = std::chrono::steady_clock;

/// `path` as a pattern of the HTTP library that matches nothing else.
std::string exactly(const std::string& path) {
    return std::regex_replace(path, std::regex("\\."), "\\.");
}

Request entryOf(Operation operation, const httplib::Request& request) {
    Request entry;
    entry.operation = operation;
    entry.path = request.path;
    entry.soapAction = request.get_header_value("SOAPAction");
    entry.contentType = request.get_header_value("Content-Type");
    entry.accept = request.get_header_value("Accept");
    entry.received = request.get_header_value<std::uint64_t>("Content-Length");
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

struct DevicePages : PageContext {
    void handle(Operation operation, const httplib::Request& request, httplib::Response& response,
                const httplib::ContentReader& reader) const {
        const auto start = Clock::now();
        const std::size_t timesCleared = faults.timesCleared();
        const Fault fault = faults.take(operation);
        Request entry = entryOf(operation, request);
        DeviceResponse answered = answer(entry, request, reader, fault);
        apply(fault, answered);
        const Content body = bodyOf(answered, operation, entityReferences);
        faults.wait(fault.delay, timesCleared);

        // Before the client can know the answer.
        entry.faulty = hasEffect(fault);
        if (!fault.closeConnection) {
            entry.code = answered.code;
            entry.message = answered.message;
            entry.status = answered.status;
            entry.bytes = body.size;
        }
        entry.duration =
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
        log.add(std::move(entry));

        if (fault.closeConnection)
            server.shutDownConnection();
        else
            send(answered, body, fault.cutAfter, response);
    }

    DeviceResponse answer(Request& entry, const httplib::Request& request,
                          const httplib::ContentReader& reader, const Fault& fault) const {
        return orFailure(entry.operation, [&] {
            DeviceRequest received = receive(entry.operation, request, reader);
            entry.body = received.body;
            entry.fields = received.form.fields;
            entry.fileContentType = received.form.fileContentType;
            DeviceResponse response = orFailure(entry.operation, [&] {
                return isCarriedOut(fault) ? api.handle(received)
                                           : DeviceResponse(result::requested_fault);
            });
            entry.device = api.deviceNumber(received);  // which a registration has only now
            return response;
        });
    }

    /// What `work` answers, or the answer that tells why it failed.
    template <typename Work>
    DeviceResponse orFailure(Operation operation, Work work) const {
        try {
            return work();
        } catch (const RequestError& error) {
            return DeviceResponse(error.result());
        } catch (const std::exception& error) {
            log.report(std::string(name(operation)) + ": " + error.what());
            return DeviceResponse(result::server_error);
        }
    }

    DeviceRequest receive(Operation operation, const httplib::Request& request,
                          const httplib::ContentReader& reader) const {
        DeviceRequest received{operation, server.url(), "", {}};
        if (request.has_header("Host"))
            received.baseUrl = "http://" + request.get_header_value("Host");
        if (descriptionOf(operation).isForm())
            received.form = readForm(request, reader, maximumBody, api.uploads());
        else
            received.body = readBody(request, reader, maximumBody);
        return received;
    }
};

}  // namespace

void addDevicePages(const PageContext& context) {
    for (const OperationDescription& description : allOperations()) {
        context.server.pages().Post(
            exactly(description.path()),
            [pages = DevicePages{context}, operation = description.operation](
                const auto& request, auto& response, const auto& reader) {
                pages.handle(operation, request, response, reader);
            });
    }
}

}  // namespace tavro::service
