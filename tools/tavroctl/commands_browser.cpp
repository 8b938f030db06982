// What the library browser asks about a file.

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <utility>

#include "account/book_map.h"
#include "account/books.h"
#include "account/files.h"
#include "account/session.h"
#include "client/placeholder.h"
#include "tavro_entry_points.h"
#include "tavroctl/commands.h"
#include "tavroctl/picture.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

constexpr int largest_side = 8192;
constexpr unsigned columns_without_terminal = 60;

/// Full path of the file that the command line calls `file`: one without "/" is in the download
/// folder. Throws Failure.
std::string fullPath(const Account& account, const std::string& file) {
    if (account.downloadFolder().empty())
        throw Failure("no download folder is configured", "run 'tavroctl setup' first");
    if (file.find('/') != std::string::npos)
        return fs::absolute(file).lexically_normal();
    return account.downloadFolder() / file;
}

/// Why the library describes no book for the file `path`.
Failure unknownBook(const Account& account, const std::string& path) {
    const std::string folder = account.downloadFolder();
    if (path.compare(0, folder.size(), folder) != 0)
        return Failure(path + " lies outside the download folder",
                       "name a file of the folder " + folder);
    const fs::path name = fs::path(path).filename();
    const bool placeholder =
        name.extension() == placeholder::extension && fs::is_regular_file(path);
    if (!placeholder && mappedFiles(account).count(name) == 0)
        return Failure("the book map does not know " + name.string() + ", and it is no placeholder",
                       "name one of the files of 'tavroctl map' or a placeholder");
    return Failure("the catalogue has no item for " + path,
                   "run 'tavroctl sync' to fetch the catalogue");
}

/// The browser's record of one book, with the texts that the library put into it.
class BookRecord {
public:
    /// Asks for the book whose file is `path`. Throws Failure when the library does not know it.
    BookRecord(const Account& account, const std::string& path) {
        openSession(account, Need::Device);  // else the library would register the device
        if (tavro_get_book_info(path.c_str(), &record) != 0)
            throw unknownBook(account, path);
    }
    ~BookRecord() {
        for (char* text : {record.title, record.author, record.category_id, record.isbn})
            std::free(text);
    }
    BookRecord(const BookRecord&) = delete;
    BookRecord& operator=(const BookRecord&) = delete;

    tavro_book_info record{};
};

/// Width and height out of "WxH". Throws UsageError.
std::pair<int, int> sizeOf(const std::string& text) {
    static const std::regex form("([0-9]{1,4})x([0-9]{1,4})");
    std::smatch match;
    if (std::regex_match(text, match, form)) {
        const std::pair size(std::stoi(match[1]), std::stoi(match[2]));
        const auto [smaller, larger] = std::minmax(size.first, size.second);
        if (smaller >= 1 && larger <= largest_side)
            return size;
    }
    throw UsageError("'" + text + "' is no size: it is WIDTHxHEIGHT, each from 1 to " +
                     std::to_string(largest_side));
}

std::string asText(const std::vector<std::string>& lines) {
    std::string text;
    for (const auto& line : lines)
        text += line + "\n";
    return text;
}

}  // namespace

void info(const Arguments& arguments, const Output& output) {
    requireDevicesFolder(arguments);
    const Account account(arguments.folder);
    const std::string path = fullPath(account, arguments.file);
    const BookRecord book(account, path);
    output.summary({{"file", path},
                    {"title", book.record.title},
                    {"author", book.record.author},
                    {"category", book.record.category_id},
                    {"isbn", book.record.isbn}});
}

void fileStatus(const Arguments& arguments, const Output& output) {
    requireDevicesFolder(arguments);
    const std::string path = fullPath(Account(arguments.folder), arguments.file);
    if (!fs::is_regular_file(path))
        throw Failure("there is no file " + path,
                      "name a file of the download folder, or see 'tavroctl books'");
    constexpr const char* states[] = {"present", "not pending", "pending"};
    output.summary({{"file", path}, {"status", states[tavro_get_book_status(path.c_str())]}});
}

void cover(const Arguments& arguments, const Output& output) {
    requireDevicesFolder(arguments);
    if (arguments.outputFile.empty() && !arguments.ascii)
        throw UsageError("cover needs --output FILE.png, --ascii or both");
    const auto [width, height] = sizeOf(arguments.size);
    const Account account(arguments.folder);
    const std::string path = fullPath(account, arguments.file);
    const BookRecord known(account, path);
    const Bitmap bitmap(
        static_cast<LecternBitmap*>(tavro_get_book_cover(path.c_str(), width, height)));
    if (!bitmap)
        throw Failure("there is no readable cover for " + path,
                      "run 'tavroctl sync --background', which fetches the covers that there are");
    if (!arguments.outputFile.empty())
        replaceFile(arguments.outputFile, asPng(*bitmap));
    Json json{{"file", path},
              {"output", arguments.outputFile},
              {"width", bitmap->width},
              {"height", bitmap->height}};
    std::string text;
    if (arguments.ascii) {
        const auto lines = asCharacters(*bitmap, output.columns(columns_without_terminal));
        json["ascii"] = lines;
        text = asText(lines);
    }
    output.result(json, text + std::to_string(bitmap->width) + "x" +
                            std::to_string(bitmap->height) + " pixels" +
                            (arguments.outputFile.empty() ? "" : " in ") +
                            displayable(arguments.outputFile));
}

}  // namespace tavro::tools
