#include "http/request_log.h"

#include <algorithm>
#include <iterator>

#include "text/text.h"

namespace tavro::service {

namespace {

/// Bytes of memory that `request` takes, roughly.
std::size_t sizeOf(const Request& request) {
    std::size_t size = sizeof request + request.path.size() + request.body.size() +
                       request.fileContentType.size() + request.soapAction.size() +
                       request.contentType.size() + request.accept.size() + request.code.size() +
                       request.message.size();
    for (const auto& field : request.fields)
        size += sizeof field + field.first.size() + field.second.size();
    return size;
}

}  // namespace

void RequestLog::add(Request request) {
    const std::lock_guard lock(mutex_);
    request.number = ++last_;
    request.time = std::chrono::system_clock::now();
    if (listener_)
        listener_(request);
    bytes_ += sizeOf(request);
    requests_.push_back(std::move(request));
    while (requests_.size() > remembered_requests || bytes_ > remembered_bytes) {
        bytes_ -= sizeOf(requests_.front());
        requests_.pop_front();
    }
}

std::vector<Request> RequestLog::requests(std::uint64_t after,
                                          std::optional<Operation> operation) const {
    const std::lock_guard lock(mutex_);
    std::vector<Request> wanted;
    std::copy_if(requests_.begin(), requests_.end(), std::back_inserter(wanted),
                 [&](const Request& request) {
                     return request.number > after &&
                            request.operation == operation.value_or(request.operation);
                 });
    return wanted;
}

RequestNumbers RequestLog::numbers() const {
    const std::lock_guard lock(mutex_);
    return {last_, requests_.size()};
}

void RequestLog::clear() {
    const std::lock_guard lock(mutex_);
    requests_.clear();
    bytes_ = 0;
}

void RequestLog::report(const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (reporter_)
        reporter_(visibleText(text));
}

}  // namespace tavro::service
