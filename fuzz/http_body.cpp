/// Requests as they come over the line, through the HTTP library to the service's readers of bodies
/// and forms. Promises: bytes of any kind end in values within the limit or in a refusal, and leave
/// no file behind.

#include <httplib.h>

#include <filesystem>
#include <string>

#include "api/result.h"
#include "http/body_reader.h"
#include "require.h"
#include "support/temporary_folder.h"

using namespace tavro::service;

namespace {

constexpr std::size_t limit = 300;

/// A connection on which `received` comes in and nothing goes out.
class Connection : public httplib::Stream {
public:
    explicit Connection(std::string received) : received_(std::move(received)) {}

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    ssize_t read(char* buffer, size_t size) override {
        const std::size_t count = received_.copy(buffer, size, position_);
        position_ += count;
        return static_cast<ssize_t>(count);
    }
    ssize_t write(const char* /*bytes*/, size_t size) override {
        return static_cast<ssize_t>(size);
    }
    void get_remote_ip_and_port(std::string& ip, int& port) const override {
        ip = "127.0.0.1";
        port = 1;
    }
    void get_local_ip_and_port(std::string& ip, int& port) const override {
        get_remote_ip_and_port(ip, port);
    }
    socket_t socket() const override { return -1; }

private:
    std::string received_;
    std::size_t position_ = 0;
};

void requireBounded(const Form& form) {
    std::size_t size = form.file ? std::filesystem::file_size(form.file.path()) : 0;
    for (const auto& [name, value] : form.fields)
        size += name == "file" && form.file ? 0 : value.size();
    require(size <= limit, "a form stays within the limit");
}

/// A server that never listens and is handed its connections.
class Server : public httplib::Server {
public:
    explicit Server(const std::string& folder) {
        Post("/body", [](const auto& request, auto& /*response*/, const auto& reader) {
            refusable([&] {
                require(readBody(request, reader, limit).size() <= limit,
                        "a body stays within the limit");
            });
        });
        Post("/form", [folder](const auto& request, auto& /*response*/, const auto& reader) {
            refusable([&] { requireBounded(readForm(request, reader, limit, folder)); });
        });
        Post("/none", [](const auto& request, auto& /*response*/, const auto& reader) {
            discardBody(request, reader);
        });
    }

    void serve(const std::string& received) {
        Connection connection(received);
        bool closed = false;
        process_request(connection, true, closed, nullptr);
    }

private:
    template <typename Action>
    static void refusable(Action action) {
        try {
            action();
        } catch (const RequestError& error) {
            require(&error.result() == &result::body_too_large ||
                        &error.result() == &result::malformed_request,
                    "a refusal says whether the body was too large or malformed");
        }
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    static Server server(folder / "");
    server.serve({reinterpret_cast<const char*>(data), size});
    require(std::filesystem::is_empty(folder / ""), "no file is left behind");
    return 0;
}
