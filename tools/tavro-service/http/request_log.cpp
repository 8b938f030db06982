#include "http/request_log.h"

#include "text/text.h"

namespace tavro::service {

namespace {

/// Bytes of memory that `request` takes, roughly.
std::size_t sizeOf(const Request& request) {
    std::size_t size = sizeof request + request.path.size() + request.body.size() +
                       request.fileContentType.size() + request.soapAction.size() +
                       request.contentType.size() + request.accept.size() + request.code.size();
    for (const auto& field : request.fields)
        size += sizeof field + field.first.size() + field.second.size();
    return size;
}

}  // namespace

void RequestLog::add(Request request) {
    const std::lock_guard lock(mutex_);
    if (listener_)
        listener_(request);
    bytes_ += sizeOf(request);
    requests_.push_back(std::move(request));
    while (requests_.size() > remembered_requests || bytes_ > remembered_bytes) {
        bytes_ -= sizeOf(requests_.front());
        requests_.pop_front();
    }
}

void RequestLog::report(const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (reporter_)
        reporter_(visibleText(text));
}

}  // namespace tavro::service
