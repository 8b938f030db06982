#include "console/password_prompt.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <iostream>
#include <optional>

#include "posix/file_descriptor.h"
#include "program/failure.h"

namespace tavro::tools {

namespace {

/// The terminal on standard input without echo, until the object goes.
class SilentTerminal {
public:
    SilentTerminal() {
        ::tcgetattr(STDIN_FILENO, &saved_);
        termios silent = saved_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~SilentTerminal() { ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved_); }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

private:
    termios saved_;
};

/// The signals that end or stop the program from outside, held back and readable from a descriptor
/// until the object goes.
class HeldSignals {
public:
    HeldSignals() : descriptor_(hold(previous_)) {}
    ~HeldSignals() { ::sigprocmask(SIG_SETMASK, &previous_, nullptr); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    int descriptor() const { return descriptor_.get(); }

    /// Takes the signal that has come.
    int take() const {
        signalfd_siginfo info{};
        return ::read(descriptor(), &info, sizeof info) == sizeof info
                   ? static_cast<int>(info.ssi_signo)
                   : SIGTERM;
    }

private:
    static int hold(sigset_t& previous) {
        sigset_t signals;
        sigemptyset(&signals);
        for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP})
            sigaddset(&signals, signal);
        ::sigprocmask(SIG_BLOCK, &signals, &previous);
        return ::signalfd(-1, &signals, SFD_CLOEXEC);
    }

    sigset_t previous_;
    posix::FileDescriptor descriptor_;
};

/// Asks `question` and reads one line from the terminal into `line`. @return the signal that came
/// instead, if one did.
std::optional<int> askSilently(const Output& output, const std::string& question,
                               std::string& line) {
    const HeldSignals signals;
    const SilentTerminal terminal;
    output.prompt(question);
    line.clear();
    pollfd sources[] = {{STDIN_FILENO, POLLIN, 0}, {signals.descriptor(), POLLIN, 0}};
    while (::poll(sources, 2, -1) > 0) {
        if (sources[1].revents != 0)
            return signals.take();
        char character = 0;
        if (::read(STDIN_FILENO, &character, 1) != 1 || character == '\n')
            break;
        line += character;
    }
    return std::nullopt;
}

std::string ask(const Output& output, const std::string& question) {
    std::string line;
    for (;;) {
        const auto signal = askSilently(output, question, line);
        output.prompt("\n");
        if (!signal)
            return line;
        ::raise(*signal);  // comes back only after a stop: ask again
    }
}

std::string askAtTerminal(const Output& output, bool twice) {
    if (::isatty(STDIN_FILENO) != 1)
        throw UsageError(
            "standard input is no terminal to ask for the password: give the password "
            "as its first line and say --password-stdin");
    std::string password = ask(output, "Password: ");
    if (twice && ask(output, "The same password again: ") != password)
        throw Failure("the two passwords differ", "run the same command again");
    return password;
}

}  // namespace

std::string readPassword(const Output& output, bool fromStandardInput, bool twice) {
    std::string password;
    if (fromStandardInput)
        std::getline(std::cin, password);
    else
        password = askAtTerminal(output, twice);
    const auto isControl = [](unsigned char character) { return std::iscntrl(character) != 0; };
    if (password.empty() || std::any_of(password.begin(), password.end(), isControl))
        throw UsageError("the password is empty or holds control characters");
    return password;
}

}  // namespace tavro::tools
