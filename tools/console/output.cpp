#include "console/output.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "posix/write_all.h"
#include "program/failure.h"

namespace tavro::tools {

namespace {

/// First descriptor that is none of the three standard ones.
constexpr int first_free = 3;

/// The member name `name` as words: "Download folder" for "downloadFolder".
std::string label(const std::string& name) {
    if (name == "url" || name == "isbn")
        return name == "url" ? "URL" : "ISBN";
    std::string words;
    for (const char letter : name) {
        const auto code = static_cast<unsigned char>(letter);
        if (words.empty())
            words += static_cast<char>(std::toupper(code));
        else if (std::isupper(code) != 0)
            words += {' ', static_cast<char>(std::tolower(code))};
        else
            words += letter;
    }
    return words;
}

std::string serialised(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace) + "\n";
}

/// The window of the terminal `descriptor`; none when it is no terminal, or tells no size.
std::optional<Window> windowOf(int descriptor) {
    winsize size{};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return std::nullopt;
    return Window{size.ws_col, size.ws_row};
}

}  // namespace

Output::Output(std::string program, bool json)
    : program_(std::move(program)),
      output_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, first_free)),
      error_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, first_free)),
      json_(json) {}

void Output::result(const Json& json, const std::string& text) const {
    if (!posix::writeAll(output_.get(), json_ ? serialised(json, 2) : text + "\n"))
        throw Failure("the result cannot be written to standard output");
}

void Output::result(const Json& json, const Table& table, const std::string& empty,
                    const std::string& end) const {
    if (table.rows.empty())
        return result(json, empty);
    const auto screen = window();
    std::string text = table.text(screen ? screen->columns : Table::unlimited) + end;
    if (end.empty())
        text.pop_back();  // the line end
    result(json, text);
}

void Output::summary(const Json& json) const {
    Table table;
    for (const auto& [name, value] : json.items()) {
        const std::string shown = value.is_boolean()  ? value ? "yes" : "no"
                                  : value.is_string() ? value.get<std::string>()
                                                      : value.dump();
        if (!shown.empty())
            table.rows.push_back({label(name), shown});
    }
    std::string text = table.text();  // whole, as paths and addresses are there to be copied
    text.pop_back();
    result(json, text);
}

void Output::error(const std::exception& error) const {
    const auto* known = dynamic_cast<const Failure*>(&error);
    const Failure failure = known != nullptr ? *known : Failure(error.what());
    const Json json{{"error", failure.what()},
                    {"code", failure.code},
                    {"message", failure.message},
                    {"advice", failure.advice}};
    const std::string advice = failure.advice.empty() ? "" : "Try: " + failure.advice + "\n";
    posix::writeAll(error_.get(),
                    json_ ? serialised(json, -1)
                          : program_ + ": " + displayable(failure.what()) + "\n" + advice);
}

void Output::prompt(const std::string& text) const {
    posix::writeAll(error_.get(), text);
}

void Output::transient(const std::string& text, const std::string& end) const {
    if (!hasTerminal())
        return;
    std::string line = displayable(text);
    if (const auto screen = windowOf(error_.get())) {
        const std::size_t columns = screen->columns - 1;  // in the last one some terminals wrap
        line = shortened(line, columns - std::min(columns, width(end))) + end;
        line = shortened(line, columns);
    } else {
        line += end;
    }
    posix::writeAll(error_.get(), "\r\x1B[K" + line);
}

std::optional<Window> Output::window() const {
    return windowOf(output_.get());
}

bool Output::hasTerminal() const {
    return ::isatty(error_.get()) == 1;
}

}  // namespace tavro::tools
