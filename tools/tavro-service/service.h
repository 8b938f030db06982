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
#include "state/book.h"

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

/// What a service serves and how.
struct Options {
    std::string address = "127.0.0.1";
    int port = 0;                    ///< 0: a free one
    std::filesystem::path books;     ///< folder of the books; empty: an empty catalogue
    std::filesystem::path database;  ///< state file, uploads beside it; empty: in memory
    bool entityReferences = false;   ///< escape texts with entity references, not with CDATA
    std::size_t maximumBody = std::size_t(256) << 20;  ///< largest request body, in bytes
    /// Identifier and password of the only consumer that may register devices; any if unset.
    std::optional<std::pair<std::string, std::string>> consumer;
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

    /// Drops all faults.
    void clearFaults();

    /// The last requests (up to 1000), the oldest first. Bodies stand here with their passwords.
    std::vector<Request> requests() const;

    /// All items of the catalogue as of the last synchronisation, deleted ones among them.
    std::vector<Book> books() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace tavro::service
