#include "faults/fault_queue.h"

#include <utility>

namespace tavro::service {

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
    const std::lock_guard lock(mutex_);
    faults_.clear();
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
