#include "service.h"

#include <httplib.h>
#include <sys/socket.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <nlohmann/json.hpp>
#include <regex>
#include <stdexcept>

#include "api/answer.h"
#include "api/device_api.h"
#include "books/book_reader.h"
#include "http/body_reader.h"
#include "http/connections.h"
#include "http/send_answer.h"
#include "state/accounts.h"
#include "state/catalogue.h"
#include "state/database.h"
#include "state/upload_folder.h"

namespace fs = std::filesystem;

namespace tavro::service {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t remembered_requests = 1000;

const fs::path& checkedFolder(const fs::path& books) {
    if (!books.empty() && !fs::is_directory(books))
        throw std::runtime_error(books.string() +
                                 " is no folder; --books wants the folder of the books");
    return books;
}

std::string urlOf(const std::string& address, int port) {
    const bool version_six = address.find(':') != std::string::npos;
    return "http://" + (version_six ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

bool isLoopback(const std::string& address) {
    return address.rfind("127.", 0) == 0 || address == "::1" ||
           address.rfind("::ffff:127.", 0) == 0;
}

/// `path` as a pattern of the HTTP library that matches nothing else.
std::string exactly(const std::string& path) {
    return std::regex_replace(path, std::regex("\\."), "\\.");
}

/// What the log keeps of `request` before it is read.
Request entryOf(Operation operation, const httplib::Request& request) {
    Request entry;
    entry.operation = operation;
    entry.path = request.path;
    entry.soapAction = request.get_header_value("SOAPAction");
    entry.contentType = request.get_header_value("Content-Type");
    entry.accept = request.get_header_value("Accept");
    return entry;
}

}  // namespace

class Service::Implementation {
public:
    explicit Implementation(Options options);
    ~Implementation() { stop(); }
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    void stop();
    std::string url() const { return urlOf(options_.address, port_); }
    std::vector<Request> requests() const;
    std::vector<Book> books();

    FaultQueue faults_;
    int port_ = 0;

private:
    void addRules();
    void addControls();
    void addPages();
    void listen();
    void handle(Operation operation, const httplib::Request& request, httplib::Response& response,
                const httplib::ContentReader& reader);
    Message receive(Operation operation, const httplib::Request& request,
                    const httplib::ContentReader& reader);
    Answer answerOf(Request& entry, const httplib::Request& request,
                    const httplib::ContentReader& reader, const Fault& fault);
    void pause(std::chrono::milliseconds delay);
    void remember(Request entry);
    void report(const std::string& text);
    void sendCover(const httplib::Request& request, httplib::Response& response);
    void addFault(const std::string& body, httplib::Response& response);
    std::string statusOfService();

    const Options options_;
    mutable std::mutex log_mutex_;
    std::deque<Request> requests_;
    std::mutex state_mutex_;  // of the state, which are the next five
    Database database_;
    UploadFolder uploads_;
    Accounts accounts_;
    Catalogue catalogue_;
    DeviceApi api_;
    std::mutex stop_mutex_;
    std::condition_variable stop_wanted_;
    bool stopping_ = false;
    httplib::Server server_;
    std::future<void> listener_;
};

Service::Implementation::Implementation(Options options)
    : options_(std::move(options)),
      database_(options_.database),
      uploads_(options_.database),
      accounts_(database_),
      catalogue_(database_, checkedFolder(options_.books), uploads_.path(),
                 [this](const std::string& text) { report(text); }),
      api_(accounts_, catalogue_, {{options_.entityReferences}, options_.consumer}) {
    addRules();
    addControls();
    addPages();
    listen();
}

void Service::Implementation::addPages() {
    for (const Operation operation : all_operations) {
        server_.Post(exactly(pathOf(operation)),
                     [this, operation](const auto& request, auto& response, const auto& reader) {
                         handle(operation, request, response, reader);
                     });
    }
    server_.Get("/covers/(\\d{1,10})",
                [this](const auto& request, auto& response) { sendCover(request, response); });
    server_.Get("/(shop|terms)", [](const auto&, auto& response) {
        response.set_content("A local stand-in of the Tavro service has nothing to sell.\n",
                             "text/plain; charset=utf-8");
    });
    server_.Post(".*", [this](const auto& request, auto& response, const auto& reader) {
        passOverBody(request, reader);
        report("there is no such page: POST " + request.path);
        response.status = 404;
    });
}

void Service::Implementation::addRules() {
    // Only this machine may make the service misbehave, and no web page that its browser shows: a
    // page cannot send JSON to another site unasked.
    server_.set_pre_routing_handler([](const auto& request, auto& response) {
        const bool control = request.path.rfind("/control/", 0) == 0;
        const bool json = request.get_header_value("Content-Type") == "application/json";
        const bool chunked = request.has_header("Transfer-Encoding");
        if (control && (!isLoopback(request.remote_addr) || (request.method == "POST" && !json)))
            response.status = 403;
        else if (request.method != "POST" && chunked)
            response.status = 411;
        else
            return httplib::Server::HandlerResponse::Unhandled;
        return httplib::Server::HandlerResponse::Handled;
    });
    server_.set_exception_handler([this](const auto& request, auto& response, auto problem) {
        try {
            std::rethrow_exception(problem);
        } catch (const Refusal& refusal) {
            response.status = std::max(refusal.result.status, 400);
        } catch (const std::exception& error) {
            report(request.path + ": " + error.what());
            response.status = 500;
        }
    });
}

void Service::Implementation::addControls() {
    server_.Post("/control/faults",
                 [this](const auto& request, auto& response, const auto& reader) {
                     addFault(readBody(request, reader, options_.maximumBody), response);
                 });
    server_.Delete("/control/faults", [this](const auto&, auto& response) {
        faults_.clear();
        response.set_content(statusOfService(), "application/json");
    });
    server_.Get("/control/status", [this](const auto&, auto& response) {
        response.set_content(statusOfService(), "application/json");
    });
}

void Service::Implementation::listen() {
    // 1. A port of one's own: without this another service on the same port would go unnoticed.
    server_.set_socket_options([](int socket) {
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    // 2. One request for each connection: a client repeats what fails on a connection used before,
    //    and a fault for one request would never be seen.
    server_.set_keep_alive_max_count(1);
    server_.set_payload_max_length(options_.maximumBody);
    port_ = options_.port;
    if (port_ == 0)
        port_ = server_.bind_to_any_port(options_.address);
    else if (!server_.bind_to_port(options_.address, port_))
        port_ = -1;
    if (port_ == -1)
        throw std::runtime_error("cannot listen on " + urlOf(options_.address, options_.port) +
                                 ": the port is in use or the address is not this machine's");
    // 3. Ready when the constructor returns.
    listener_ = std::async(std::launch::async, [this] { server_.listen_after_bind(); });
    while (!server_.is_running() &&
           listener_.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    }
}

void Service::Implementation::stop() {
    if (!listener_.valid())
        return;
    {
        const std::lock_guard lock(stop_mutex_);
        stopping_ = true;
    }
    stop_wanted_.notify_all();
    server_.stop();
    while (listener_.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready)
        shutDownConnections(port_);
    listener_ = {};
}

void Service::Implementation::handle(Operation operation, const httplib::Request& request,
                                     httplib::Response& response,
                                     const httplib::ContentReader& reader) {
    // 1. The request.
    const auto start = Clock::now();
    const Fault fault = faults_.take(operation);
    Request entry = entryOf(operation, request);
    Answer answer = answerOf(entry, request, reader, fault);
    distort(answer, fault);
    pause(fault.delay);

    // 2. The log, before the client can know the answer.
    entry.faulty = isFaulty(fault);
    if (!fault.closeConnection) {
        entry.code = answer.code;
        entry.status = answer.status;
        entry.bytes = answer.content.size;
    }
    entry.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    remember(std::move(entry));

    // 3. The answer.
    if (fault.closeConnection)
        shutDownConnections(request.local_port, request.remote_port);
    else
        send(answer, fault.cutAfter, response);
}

Answer Service::Implementation::answerOf(Request& entry, const httplib::Request& request,
                                         const httplib::ContentReader& reader, const Fault& fault) {
    const std::string code = fault.resultCode.value_or("");
    try {
        const Message message = receive(entry.operation, request, reader);
        entry.body = message.body;
        entry.fields = message.form.fields;
        entry.fileContentType = message.form.fileContentType;
        if (fault.closeConnection || (fault.resultCode && !isSuccess(code)))
            throw Refusal{result::requested_fault};
        const std::lock_guard lock(state_mutex_);
        return api_.answer(message, code);
    } catch (const Refusal& refusal) {
        return api_.resultAnswer(entry.operation, refusal.result, code);
    } catch (const std::exception& error) {
        report(std::string(name(entry.operation)) + ": " + error.what());
        return api_.resultAnswer(entry.operation, result::server_error, code);
    }
}

Message Service::Implementation::receive(Operation operation, const httplib::Request& request,
                                         const httplib::ContentReader& reader) {
    Message message{operation, "", {}, url()};
    if (request.has_header("Host"))
        message.baseUrl = "http://" + request.get_header_value("Host");
    if (isContentPage(operation))
        message.form = readForm(request, reader, options_.maximumBody, uploads_.path());
    else
        message.body = readBody(request, reader, options_.maximumBody);
    return message;
}

void Service::Implementation::pause(std::chrono::milliseconds delay) {
    std::unique_lock lock(stop_mutex_);
    stop_wanted_.wait_for(lock, delay, [this] { return stopping_; });
}

void Service::Implementation::remember(Request entry) {
    const std::lock_guard lock(log_mutex_);
    if (options_.log)
        options_.log(entry);
    requests_.push_back(std::move(entry));
    if (requests_.size() > remembered_requests)
        requests_.pop_front();
}

void Service::Implementation::report(const std::string& text) {
    const std::lock_guard lock(log_mutex_);
    if (options_.report)
        options_.report(text);
}

void Service::Implementation::sendCover(const httplib::Request& request,
                                        httplib::Response& response) {
    const long long id = std::stoll(request.matches[1]);
    const auto book = [&] {
        const std::lock_guard lock(state_mutex_);
        return catalogue_.find(static_cast<int>(std::min<long long>(id, INT32_MAX)));
    }();
    response.status = 404;
    if (!book || !book->hasCover)
        return;
    const std::string cover = readBook(book->original).cover;
    if (cover.empty())
        return;
    response.status = 200;
    response.set_content(cover, imageType(cover));
}

void Service::Implementation::addFault(const std::string& body, httplib::Response& response) {
    try {
        auto [operation, fault] = faultFromJson(body);
        faults_.add(operation, std::move(fault));
        response.set_content(statusOfService(), "application/json");
    } catch (const std::invalid_argument& error) {
        response.status = 400;
        response.set_content(error.what(), "text/plain; charset=utf-8");
    }
}

std::string Service::Implementation::statusOfService() {
    const auto items = books();
    const auto present =
        std::count_if(items.begin(), items.end(), [](const Book& book) { return !book.deleted; });
    nlohmann::ordered_json json = {{"books", present}, {"requests", requests().size()}};
    json["faults"] = nlohmann::json::array();
    for (const NamedFault& fault : faults_.pending())
        json["faults"].push_back(nlohmann::ordered_json::parse(faultToJson(fault)));
    return json.dump() + "\n";
}

std::vector<Request> Service::Implementation::requests() const {
    const std::lock_guard lock(log_mutex_);
    return {requests_.begin(), requests_.end()};
}

std::vector<Book> Service::Implementation::books() {
    const std::lock_guard lock(state_mutex_);
    return catalogue_.books();
}

Service::Service(Options options)
    : implementation_(std::make_unique<Implementation>(std::move(options))) {}

Service::~Service() = default;

int Service::port() const {
    return implementation_->port_;
}

std::string Service::url() const {
    return implementation_->url();
}

void Service::stop() {
    implementation_->stop();
}

void Service::inject(Operation operation, Fault fault) {
    implementation_->faults_.add(operation, std::move(fault));
}

void Service::clearFaults() {
    implementation_->faults_.clear();
}

std::vector<Request> Service::requests() const {
    return implementation_->requests();
}

std::vector<Book> Service::books() const {
    return implementation_->books();
}

}  // namespace tavro::service
