#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "api/operation.h"

namespace tavro::service {

/// One request of a device and how it was answered.
struct Request {
    Operation operation = Operation::RegisterDevice;
    std::string path;
    std::string body;  ///< of an XML request; empty for a form
    /// Form fields in the order received; the value of the part "file" is its announced name.
    std::vector<std::pair<std::string, std::string>> fields;
    std::string fileContentType;  ///< of the part "file"
    std::string soapAction;
    std::string contentType;
    std::string accept;
    std::string code;       ///< result code answered; empty if the connection was closed instead
    int status = 0;         ///< HTTP status answered; 0 if the connection was closed instead
    bool faulty = false;    ///< whether a fault had its hand in it
    std::size_t bytes = 0;  ///< size of the answer's body as announced
    std::chrono::milliseconds duration{0};  ///< from the first header line to the answer's start
};

/// Remembers the last requests and tells of them. Every function may be called from any thread.
class RequestLog {
public:
    using Listener = std::function<void(const Request&)>;
    using Reporter = std::function<void(const std::string&)>;

    /// Tells `listener` of requests and `reporter` of what is wrong, one call at a time; either may
    /// be empty.
    RequestLog(Listener listener, Reporter reporter)
        : listener_(std::move(listener)), reporter_(std::move(reporter)) {}

    /// Tells of `request` and remembers it.
    void add(Request request);

    /// Tells of what is wrong, with U+FFFD for whatever a terminal would not show.
    void report(const std::string& text);

    /// The last requests (1000, or fewer if they are large), the oldest first.
    std::vector<Request> requests() const {
        const std::lock_guard lock(mutex_);
        return {requests_.begin(), requests_.end()};
    }

private:
    static constexpr std::size_t remembered_requests = 1000;
    static constexpr std::size_t remembered_bytes = 16u << 20;

    const Listener listener_;
    const Reporter reporter_;
    mutable std::mutex mutex_;
    std::deque<Request> requests_;
    std::size_t bytes_ = 0;  // of them all, roughly
};

}  // namespace tavro::service
