#include "faults/fault.h"

#include "api/device_response.h"

namespace tavro::service {

bool isCarriedOut(const Fault& fault) {
    return !fault.closeConnection && (!fault.resultCode || isSuccess(*fault.resultCode));
}

void apply(const Fault& fault, DeviceResponse& response) {
    const bool carriesCode = !response.content;  // not so the content of a book
    if (fault.resultCode && carriesCode)
        response.code = *fault.resultCode;
    if (fault.httpStatus)
        response.status = *fault.httpStatus;
    if (fault.fileName)
        response.fileName = *fault.fileName;
    if (fault.malformed)
        response.content =
            contentOf("<?xml version=\"1.0\"?><Answer><Error>1003</Message></Answer>");
    if (fault.body)
        response.content = contentOf(*fault.body);
}

void FaultQueue::add(Operation operation, Fault fault) {
    const std::lock_guard lock(mutex_);
    auto& waiting = faults_[operation];
    if (!waiting.empty() && waiting.back().times == 0)
        waiting.pop_back();
    waiting.push_back(std::move(fault));
}

Fault FaultQueue::take(Operation operation) {
    const std::lock_guard lock(mutex_);
    auto& waiting = faults_[operation];
    if (waiting.empty())
        return {};
    Fault fault = waiting.front();
    if (fault.times > 0 && --waiting.front().times == 0)
        waiting.pop_front();
    return fault;
}

void FaultQueue::clear() {
    {
        const std::lock_guard lock(mutex_);
        faults_.clear();
        ++timesCleared_;
    }
    cleared_.notify_all();
}

std::size_t FaultQueue::timesCleared() const {
    const std::lock_guard lock(mutex_);
    return timesCleared_;
}

void FaultQueue::wait(std::chrono::milliseconds delay, std::size_t timesCleared) {
    std::unique_lock lock(mutex_);
    cleared_.wait_for(lock, delay, [&] { return timesCleared_ > timesCleared; });
}

std::vector<NamedFault> FaultQueue::pending() const {
    const std::lock_guard lock(mutex_);
    std::vector<NamedFault> pending;
    for (const auto& [operation, waiting] : faults_) {
        for (const Fault& fault : waiting)
            pending.emplace_back(operation, fault);
    }
    return pending;
}

}  // namespace tavro::service
