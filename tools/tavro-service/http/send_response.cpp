#include "http/send_response.h"

#include <algorithm>
#include <array>

namespace tavro::service {

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

}  // namespace tavro::service
