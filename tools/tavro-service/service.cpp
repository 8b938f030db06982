#include "service.h"

#include "http/pages.h"

namespace tavro::service {

class Service::Implementation {
public:
    explicit Implementation(const Options& options)
        : log(options.log, options.report),
          api(
              options.database, options.books, options.consumer,
              [this](const std::string& text) { log.report(text); }, options.progress),
          server(options.address, options.port, options.patience),
          names(options.address, options.hosts) {
        const PageContext context{
            server, api, faults, log, names, options.maximumBody, options.entityReferences};
        addDevicePages(context);
        addControlPages(context);
        addServicePages(context);
        server.listen();
    }
    ~Implementation() { stop(); }
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    void stop() {
        faults.clear();  // ends all delays
        server.stop();
    }

    FaultQueue faults;
    RequestLog log;
    DeviceApi api;
    HttpServer server;
    const OwnNames names;
};

Service::Service(Options options) : implementation_(std::make_unique<Implementation>(options)) {}

Service::~Service() = default;

int Service::port() const {
    return implementation_->server.port();
}

std::string Service::url() const {
    return implementation_->server.url();
}

void Service::stop() {
    implementation_->stop();
}

void Service::inject(Operation operation, Fault fault) {
    implementation_->faults.add(operation, std::move(fault));
}

void Service::clearFaults() {
    implementation_->faults.clear();
}

std::vector<Request> Service::requests() const {
    return implementation_->log.requests();
}

void Service::clearRequests() {
    implementation_->log.clear();
}

std::vector<Book> Service::books() const {
    return implementation_->api.books();
}

}  // namespace tavro::service
