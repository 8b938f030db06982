#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "api/operation.h"

namespace tavro::service {

/// What to do instead of, or around, the true answer; whatever is unset stays true.
///
/// The request is carried out all the same, unless `resultCode` is no success or the connection is
/// closed without an answer: then nothing changes in the state.
struct Fault {
    std::chrono::milliseconds delay{0};     ///< wait before the answer
    std::optional<std::string> resultCode;  ///< code of the answer's "Error" element
    std::optional<int> httpStatus;
    std::optional<std::string> body;      ///< exact bytes of the answer's body
    std::optional<std::size_t> cutAfter;  ///< announce all, send so many bytes, close
    bool malformed = false;               ///< a body that is not well-formed XML
    bool closeConnection = false;         ///< close without any answer
    /// A download: exactly this text after "filename=", or no such header if it is empty.
    std::optional<std::string> fileName;
    int times = 0;  ///< for the next so many requests; 0: until cleared
};

/// A fault and the operation that it is for.
using NamedFault = std::pair<Operation, Fault>;

/// Whether a request is carried out in spite of `fault`.
bool isCarriedOut(const Fault& fault);

/// Changes `response` to what `fault` makes of it. The delay, the cut and the closed connection are
/// up to whoever sends it.
void apply(const Fault& fault, DeviceResponse& response);

/// The faults that wait for their requests. Every function may be called from any thread.
class FaultQueue {
public:
    /// Puts `fault` behind those that wait for `operation`. One that lasts until cleared gives way.
    void add(Operation operation, Fault fault);

    /// The fault for the next request of `operation`, counted as used; without effect if there is
    /// none.
    Fault take(Operation operation);

    /// Drops all faults and ends all delays.
    void clear();

    /// How often faults were cleared.
    std::size_t timesCleared() const;

    /// Waits for `delay`, but not when faults were cleared more often than `timesCleared`.
    void wait(std::chrono::milliseconds delay, std::size_t timesCleared);

    /// The faults still to come.
    std::vector<NamedFault> pending() const;

private:
    mutable std::mutex mutex_;  // of everything below
    std::condition_variable cleared_;
    std::size_t timesCleared_ = 0;
    std::map<Operation, std::deque<Fault>> faults_;
};

}  // namespace tavro::service
