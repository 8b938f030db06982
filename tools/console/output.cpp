#include "console/output.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <utility>

#include "posix/write_all.h"
#include "program/failure.h"

namespace tavro::tools {

namespace {

constexpr const char* replacement_character = "\xEF\xBF\xBD";

/// First descriptor that is none of the three standard ones.
constexpr int first_free = 3;

/// Columns that the displayable text `text` takes on a terminal.
std::size_t width(const std::string& text) {
    std::wstring wide(text.size(), L'\0');
    const std::size_t length = std::mbstowcs(wide.data(), text.c_str(), wide.size());
    const int columns = length <= wide.size() ? ::wcswidth(wide.data(), length) : -1;
    return columns < 0 ? text.size()  // only without a UTF-8 locale
                       : static_cast<std::size_t>(columns);
}

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

}  // namespace

std::string displayable(const std::string& text) {
    std::mbstate_t state{};
    std::string shown;
    wchar_t character = 0;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t size = std::mbrtowc(&character, &text[at], text.size() - at, &state);
        const bool whole = size > 0 && size <= text.size() - at;
        if (whole && std::iswprint(static_cast<std::wint_t>(character)) != 0)
            shown.append(text, at, size);
        else
            shown += replacement_character;
        if (!whole) {
            size = 1;
            state = {};
        }
        at += size;
    }
    return shown;
}

std::string Table::text() const {
    auto lines = rows;
    if (!headings.empty())
        lines.insert(lines.begin(), headings);
    std::vector<std::size_t> widths;
    for (auto& line : lines) {
        widths.resize(line.size());
        for (std::size_t column = 0; column < line.size(); ++column) {
            line[column] = displayable(line[column]);
            widths[column] = std::max(widths[column], width(line[column]));
        }
    }
    std::string text;
    for (const auto& line : lines) {
        for (std::size_t column = 0; column + 1 < line.size(); ++column)
            text += line[column] + std::string(widths[column] - width(line[column]) + 2, ' ');
        text += line.back() + "\n";
    }
    return text;
}

Output::Output(std::string program, bool json)
    : program_(std::move(program)),
      output_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, first_free)),
      error_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, first_free)),
      json_(json) {}

void Output::result(const Json& json, const std::string& text) const {
    if (!posix::writeAll(output_.get(), json_ ? serialised(json, 2) : text + "\n"))
        throw Failure("the result cannot be written to standard output");
}

void Output::result(const Json& json, const Table& table, const std::string& empty) const {
    std::string text = table.rows.empty() ? empty + "\n" : table.text();
    text.pop_back();
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
    result(json, table, "");
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

void Output::transient(const std::string& text) const {
    if (hasTerminal())
        posix::writeAll(error_.get(), "\r\x1B[K" + displayable(text));
}

unsigned Output::columns(unsigned otherwise) const {
    winsize size{};
    const bool known = ::ioctl(output_.get(), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : otherwise;
}

bool Output::hasTerminal() const {
    return ::isatty(error_.get()) == 1;
}

}  // namespace tavro::tools
