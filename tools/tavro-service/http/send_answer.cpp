#include "http/send_answer.h"

#include <algorithm>
#include <array>
#include <string>

namespace tavro::service {

void distort(Answer& answer, const Fault& fault) {
    if (fault.httpStatus)
        answer.status = *fault.httpStatus;
    if (fault.fileName)
        answer.fileName = *fault.fileName;
    if (fault.malformed)
        answer.content = contentOf("<?xml version=\"1.0\"?><Answer><Error>1003</Message></Answer>");
    if (fault.body)
        answer.content = contentOf(*fault.body);
}

bool isFaulty(const Fault& fault) {
    return fault.delay.count() > 0 || fault.resultCode || fault.httpStatus || fault.body ||
           fault.cutAfter || fault.malformed || fault.closeConnection || fault.fileName;
}

void send(const Answer& answer, std::optional<std::size_t> cut, httplib::Response& response) {
    response.status = answer.status;
    // Last on its line and without quotes: a device takes everything up to the end for the name.
    if (!answer.fileName.empty())
        response.set_header("Content-Disposition", "attachment; filename=" + answer.fileName);
    if (answer.content.size == 0)
        return response.set_content("", answer.contentType);
    response.set_content_provider(
        answer.content.size, answer.contentType,
        [content = answer.content, end = cut.value_or(answer.content.size)](
            std::size_t offset, std::size_t length, httplib::DataSink& sink) {
            std::array<char, 65536> buffer;
            const std::size_t left = end - std::min(end, offset);
            const std::size_t wanted = std::min({length, left, buffer.size()});
            const std::size_t got = wanted ? content.read(offset, buffer.data(), wanted) : 0;
            return got > 0 && sink.write(buffer.data(), got);
        });
}

}  // namespace tavro::service
