// fl_print_log2: one line for each message, written with one call, to where TAVRO_LOG says.

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "core_utils.h"
#include "decimal.h"
#include "file_access.h"
#include "guarded.h"
#include "local_time.h"
#include "posix/write_all.h"

namespace {

constexpr int error_level = 1;

__attribute__((format(printf, 1, 0))) std::string formatted(const char* format, va_list arguments) {
    char* text = nullptr;
    if (::vasprintf(&text, format, arguments) == -1)
        return format;  // arguments that cannot be converted: the format still tells the place
    const std::unique_ptr<char, decltype(&std::free)> owner(text, std::free);
    return text;
}

/// `text` without a last line break, and with other control characters made visible.
std::string onOneLine(std::string text) {
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    std::string line;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        char escape[8] = "\\n";
        if (character != '\n')
            std::snprintf(escape, sizeof escape, "\\x%02x", code);
        const bool control = (code < ' ' && character != '\t') || code == 0x7f;
        control ? line.append(escape) : line.append(1, character);
    }
    return line;
}

/// Writes `line` to the file that TAVRO_LOG names, or to a standard stream.
void writeLine(const std::string& line) {
    const char* const name = std::getenv("TAVRO_LOG");
    const std::string target = name == nullptr ? "stderr" : name;
    const bool named = target != "stderr" && target != "stdout";
    const posix::FileDescriptor file =
        named ? openForAppending(target.c_str()) : posix::FileDescriptor(-1);
    const int stream = target == "stdout" ? STDOUT_FILENO : STDERR_FILENO;
    posix::writeAll(file ? file.get() : stream, line);
}

}  // namespace

void fl_print_log2(int level, const char* file, int line, const char* function, const char* format,
                   ...) {
    if (format == nullptr || level > environmentNumber("TAVRO_LOG_LEVEL", error_level))
        return;
    const int callersError = errno;
    va_list arguments;
    va_start(arguments, format);
    guarded(false, [&] {
        const std::string place = std::string(file == nullptr ? "?" : file) + ":" +
                                  std::to_string(line) + " " +
                                  (function == nullptr ? "?" : function);
        writeLine(localTime() + " level " + std::to_string(level) + " process " +
                  std::to_string(g_process_pid) + " " + place + ": " +
                  onOneLine(formatted(format, arguments)) + "\n");
        return true;
    });
    va_end(arguments);
    errno = callersError;
}
