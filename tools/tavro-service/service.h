#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "api/operation.h"
#include "faults/fault.h"
#include "faults/fault_syntax.h"
#include "http/request_log.h"
#include "state/book.h"

namespace tavro::service {

/// What a service serves and how.
struct Options {
    std::string address = "127.0.0.1";
    int port = 0;                    ///< 0: a free one
    std::vector<std::string> hosts;  ///< more names under which it may be spoken to
    std::filesystem::path books;     ///< folder of the books; empty: an empty catalogue
    std::filesystem::path database;  ///< state file, uploads beside it; empty: in memory
    bool entityReferences = false;   ///< escape texts with entity references, not with CDATA
    std::size_t maximumBody = std::size_t(256) << 20;  ///< largest request body, in bytes
    /// Identifier and password of the only consumer that may register devices; any if unset.
    std::optional<std::pair<std::string, std::string>> consumer;
    /// How long a client may keep its connection waiting, apart from what its bytes take on a slow
    /// line.
    std::chrono::milliseconds patience{20000};
    /// Told, while the books are first read, how many of all files were looked at; what it throws
    /// ends the start.
    std::function<void(std::size_t done, std::size_t all)> progress;
    /// Told of each request before its answer goes out; calls never overlap.
    std::function<void(const Request&)> log;
    /// Told of what is wrong (unreadable books, unknown pages, failures); calls never overlap.
    std::function<void(const std::string&)> report;
};

/// The Tavro service over HTTP, on threads of its own. Every function may be called from any
/// thread.
class Service {
public:
    /// Opens the state, reads the books and starts to listen. Throws `std::runtime_error` that says
    /// what to do if the port, the folder or the state cannot be used.
    explicit Service(Options options);

    /// Stops.
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// The port on which the service listens.
    int port() const;

    /// Address of the service, as "http://127.0.0.1:1510".
    std::string url() const;

    /// Stops listening, cuts the connections that are open and returns when all threads have ended.
    void stop();

    /// Adds a fault for the next requests of `operation`; see `FaultQueue::add`.
    void inject(Operation operation, Fault fault);

    /// Drops all faults and ends all delays.
    void clearFaults();

    /// The last requests (1000, or fewer if they are large), the oldest first. Bodies stand here
    /// with their passwords.
    std::vector<Request> requests() const;

    /// Forgets the requests that arrived so far.
    void clearRequests();

    /// All items of the catalogue as of the last synchronisation, deleted ones among them.
    std::vector<Book> books() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace tavro::service
