#include "http/request_log.h"

namespace tavro::service {

namespace {

constexpr std::size_t remembered_requests = 1000;

}  // namespace

void RequestLog::add(Request request) {
    const std::lock_guard lock(mutex_);
    if (listener_)
        listener_(request);
    requests_.push_back(std::move(request));
    if (requests_.size() > remembered_requests)
        requests_.pop_front();
}

void RequestLog::report(const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (reporter_)
        reporter_(text);
}

std::vector<Request> RequestLog::requests() const {
    const std::lock_guard lock(mutex_);
    return {requests_.begin(), requests_.end()};
}

}  // namespace tavro::service
