#pragma once

#include <httplib.h>
#include <sys/types.h>

#include <array>
#include <chrono>
#include <string>
#include <string_view>

namespace tavro::service {

/// A connection as the HTTP library reads and writes it. It ends when its client keeps it waiting:
/// all in all for longer than a given patience and what a very slow line takes for the bytes that
/// went over it.
class Connection : public httplib::Stream {
public:
    /// Uses `socket`, which must outlive the object.
    Connection(int socket, std::chrono::milliseconds patience)
        : socket_(socket), patience_(patience) {}

    /// Says that the answer has ended, and reads for a moment what the client still sends: if that
    /// were left unread, the client might lose the answer.
    void finish();

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* bytes, size_t size) override;
    ssize_t write(const char* bytes, size_t size) override;
    void get_remote_ip_and_port(std::string& address, int& port) const override;
    void get_local_ip_and_port(std::string& address, int& port) const override;
    int socket() const override { return socket_; }

private:
    using Clock = std::chrono::steady_clock;

    bool waitFor(short event);
    Clock::duration timeLeft() const;

    const int socket_;
    const std::chrono::milliseconds patience_;
    Clock::duration waited_{0};
    std::size_t transferred_ = 0;
    std::array<char, 4096> buffer_;
    std::string_view received_;  // bytes of the buffer that nobody has read yet
};

}  // namespace tavro::service
