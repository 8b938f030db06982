#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "api/operation.h"

namespace tavro::service {

/// One request of a device and how it was answered.
struct Request {
    std::uint64_t number = 0;  ///< in the order of the answers, from 1 on; the log gives it
    std::chrono::system_clock::time_point time;  ///< when it was answered; the log sets it
    Operation operation = Operation::RegisterDevice;
    std::string path;
    std::string body;  ///< of an XML request; empty for a form
    /// Form fields in the order received; the value of the part "file" is its announced name.
    std::vector<std::pair<std::string, std::string>> fields;
    std::string fileContentType;  ///< of the part "file"
    std::string soapAction;
    std::string contentType;
    std::string accept;
    std::int64_t device = 0;     ///< number of the registered device that asked; 0 if unknown
    std::uint64_t received = 0;  ///< size of the request's body as announced
    std::string code;       ///< result code answered; empty if the connection was closed instead
    std::string message;    ///< what the code means; empty alike
    int status = 0;         ///< HTTP status answered; 0 if the connection was closed instead
    bool faulty = false;    ///< whether a fault had its hand in it
    std::size_t bytes = 0;  ///< size of the answer's body as announced
    std::chrono::milliseconds duration{0};  ///< from the first header line to the answer's start
};

/// The numbers of the requests that are remembered, which have no gaps.
struct RequestNumbers {
    std::uint64_t last = 0;  ///< of the last request ever, remembered or not
    std::size_t count = 0;   ///< how many are remembered
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

    /// The last requests (1000, or fewer if they are large), the oldest first; of them only those
    /// with a number above `after`, and those of `operation` if it is set.
    std::vector<Request> requests(std::uint64_t after = 0,
                                  std::optional<Operation> operation = {}) const;

    /// Which requests are remembered.
    RequestNumbers numbers() const;

    /// Forgets all requests; the next one's number is what it would have been.
    void clear();

private:
    static constexpr std::size_t remembered_requests = 1000;
    static constexpr std::size_t remembered_bytes = 16u << 20;

    const Listener listener_;
    const Reporter reporter_;
    mutable std::mutex mutex_;
    std::deque<Request> requests_;
    std::size_t bytes_ = 0;  // of them all, roughly
    std::uint64_t last_ = 0;
};

}  // namespace tavro::service
