#include <strings.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <utility>

#include "program/failure.h"
#include "tavroctl/book_file.h"
#include "tavroctl/command_line.h"
#include "tavroctl/joined.h"
#include "tavroctl/output_file.h"
#include "tavroctl/picture.h"
#include "tavroctl/shared_options.h"

namespace tavro::tools {

namespace {

constexpr int largest_side = 8192;
constexpr const char* default_size = "300x400";
constexpr unsigned columns_without_terminal = 60;
constexpr unsigned no_limit = largest_side;

struct Options {
    std::string file;
    std::string size = default_size;
    std::string outputFile;  ///< empty for none
    bool ascii = false;
};

/// The number of pixels that `text` is; 0 when it is none from 1 to `largest_side`.
int sideOf(const std::string& text) {
    const bool isNumber = !text.empty() && text.size() <= std::to_string(largest_side).size() &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    const int side = isNumber ? std::stoi(text) : 0;
    return side <= largest_side ? side : 0;
}

/// Width and height out of "WxH". Throws UsageError.
std::pair<int, int> sizeOf(const std::string& text) {
    const std::size_t middle = std::min(text.find('x'), text.size());
    const std::pair size(sideOf(text.substr(0, middle)),
                         sideOf(middle < text.size() ? text.substr(middle + 1) : ""));
    if (size.first > 0 && size.second > 0)
        return size;
    throw UsageError("'" + text + "' is no size: it is WIDTHxHEIGHT, each from 1 to " +
                     std::to_string(largest_side));
}

/// Sees that nobody takes `file` for another kind of picture than it will be. Throws UsageError.
void requirePngName(const std::string& file) {
    const std::string extension = std::filesystem::path(file).extension();
    for (const char* other : {".jpg", ".jpeg", ".bmp", ".gif", ".webp"})
        if (::strcasecmp(extension.c_str(), other) == 0)
            throw UsageError("'" + file +
                             "': the cover is written as a PNG; name it so, as cover.png");
}

/// The cover of the book file `path`, of at most `size` pixels. Throws Failure.
Bitmap coverOf(const Account& account, const std::string& path, std::pair<int, int> size) {
    const BookRecord known(account, path);
    Bitmap bitmap(
        static_cast<LecternBitmap*>(tavro_get_book_cover(path.c_str(), size.first, size.second)));
    if (!bitmap)
        throw Failure("there is no readable cover for " + path,
                      "run 'tavroctl sync --background', which fetches the covers that there are");
    return bitmap;
}

/// The characters that a picture may take: what it says below, and the shell's next prompt, shall
/// leave all of it in the window.
Window roomOn(const Output& output) {
    constexpr unsigned rows_below = 2;
    Window room = output.window().value_or(Window{columns_without_terminal, 0});
    room.rows = room.rows == 0 ? no_limit : std::max(room.rows, rows_below + 1) - rows_below;
    return room;
}

void showCover(const Options& options, const Account& account, const Output& output) {
    if (options.outputFile.empty() && !options.ascii)
        throw UsageError("cover needs --output FILE.png, --ascii or both");
    requirePngName(options.outputFile);
    const auto size = sizeOf(options.size);
    const std::string path = fullPath(account, options.file);
    const Bitmap bitmap = coverOf(account, path, size);
    Json json{{"file", path},
              {"output", options.outputFile},
              {"width", bitmap->width},
              {"height", bitmap->height}};
    std::string text =
        std::to_string(bitmap->width) + "x" + std::to_string(bitmap->height) + " pixels";
    if (!options.outputFile.empty()) {
        writeOutputFile(output, options.outputFile, asPng(*bitmap));
        text += " in " + displayable(options.outputFile);
    }
    if (options.ascii) {
        const auto lines = asCharacters(*bitmap, roomOn(output));
        json["ascii"] = lines;
        text.insert(0, joined(lines, "\n") + "\n");
    }
    output.result(json, text);
}

}  // namespace

void addCover(CommandLine& commandLine) {
    const auto options = std::make_shared<Options>();
    CLI::App& command =
        commandLine.add("cover", "Show or save a book's cover",
                        "cover novel.epub --output cover.png", withOptions(showCover, options));
    addFile(command, options->file, true);
    command
        .add_option("--size", options->size,
                    "Pixels at most, each from 1 to " + std::to_string(largest_side))
        ->option_text(std::string("WxH [") + default_size + "]");
    command.add_option("--output", options->outputFile, "Write it as a grey PNG")
        ->option_text("FILE.png");
    command.add_flag("--ascii", options->ascii, "Print it as a picture of characters");
}

}  // namespace tavro::tools
