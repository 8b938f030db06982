#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <string>

#include "support/processes.h"

/// A program on a terminal of its own.
class Terminal {
public:
    /// Starts the program `words[0]` with the arguments behind it, in a window that tells its size
    /// if that is not 0.
    explicit Terminal(Words words, winsize window = {})
        : process_(::forkpty(&fd_, nullptr, nullptr, &window)) {
        if (process_ == -1)  // which a signal would take for all processes that there are
            throw std::runtime_error("there is no terminal to be had");
        if (process_ == 0) {
            ::execv(words[0].c_str(), argumentsOf(words).data());
            ::_exit(127);
        }
    }
    ~Terminal() { ::close(fd_); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Waits until the program has written `text` behind what was expected before.
    void expect(const std::string& text) {
        char bytes[256];
        while (shown.find(text, expected_) == std::string::npos) {
            pollfd terminal{fd_, POLLIN, 0};
            ASSERT_EQ(::poll(&terminal, 1, patience), 1) << text << " does not come: " << shown;
            const ssize_t size = ::read(fd_, bytes, sizeof bytes);
            ASSERT_GT(size, 0) << "instead of " << text << " came " << shown;
            shown.append(bytes, static_cast<std::size_t>(size));
        }
        expected_ = shown.find(text, expected_) + text.size();
    }

    void type(const std::string& text) const {
        ASSERT_EQ(static_cast<ssize_t>(text.size()), ::write(fd_, text.data(), text.size()));
    }

    bool echoes() const {
        termios settings{};
        ::tcgetattr(fd_, &settings);
        return (settings.c_lflag & ECHO) != 0;
    }

    /// Waits until the program has ended, and ends one that does not. @return as `statusOf` does.
    int wait() const {
        siginfo_t ended{};
        for (int waited = 0; ended.si_pid == 0 && waited < patience; waited += 10) {
            ::waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOWAIT | WNOHANG);
            ::usleep(10000);
        }
        if (ended.si_pid == 0) {
            ADD_FAILURE() << "the program does not end: " << shown;
            ::kill(process_, SIGKILL);
        }
        return statusOf(process_);
    }

    std::string shown;

private:
    static constexpr int patience = 30000;  // milliseconds

    std::size_t expected_ = 0;
    int fd_ = -1;
    pid_t process_;
};
