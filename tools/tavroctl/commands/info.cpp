#include <memory>

#include "tavroctl/book_file.h"
#include "tavroctl/command_line.h"
#include "tavroctl/shared_options.h"

namespace tavro::tools {

namespace {

void showInfo(const std::string& file, const Account& account, const Output& output) {
    const std::string path = fullPath(account, file);
    const BookRecord book(account, path);
    output.summary({{"file", path},
                    {"title", book->title},
                    {"author", book->author},
                    {"category", book->category_id},
                    {"isbn", book->isbn}});
}

}  // namespace

void addInfo(CommandLine& commandLine) {
    const auto file = std::make_shared<std::string>();
    CLI::App& command = commandLine.add("info", "Show what the library browser learns about a book",
                                        "info novel.epub", withOptions(showInfo, file));
    addFile(command, *file, true);
}

}  // namespace tavro::tools
