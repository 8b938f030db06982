#pragma once

#include <deque>
#include <map>
#include <mutex>
#include <vector>

#include "faults/fault.h"

namespace tavro::service {

/// The faults that wait for their requests. Every function may be called from any thread.
class FaultQueue {
public:
    /// Puts `fault` behind those that wait for `operation`. One that lasts until cleared gives way.
    void add(Operation operation, Fault fault);

    /// The fault for the next request of `operation`, counted as used; without effect if there is
    /// none.
    Fault take(Operation operation);

    /// Drops all faults.
    void clear();

    /// The faults still to come.
    std::vector<NamedFault> pending() const;

private:
    mutable std::mutex mutex_;
    std::map<Operation, std::deque<Fault>> faults_;
};

}  // namespace tavro::service
