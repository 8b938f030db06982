/// The readers of books, each on the same file. Promises: a file of any content is read or refused
/// with an explanation; what it says of itself is fit for a device.

#include <filesystem>
#include <string>
#include <vector>

#include "book_promises.h"
#include "books/book_reader.h"
#include "support/temporary_folder.h"

namespace {

/// One file under a name for each format.
std::vector<std::string> booksIn(const TemporaryFolder& folder) {
    std::vector<std::string> books = {folder / "book.txt"};
    writeFile(books[0], "");
    for (const char* const name : {"book.epub", "book.fb2", "book.fb2.zip", "book.pdf"})
        std::filesystem::create_hard_link(books[0], books.emplace_back(folder / name));
    return books;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    static const std::vector<std::string> books = booksIn(folder);
    writeFile(books[0], {reinterpret_cast<const char*>(data), size});
    for (const std::string& book : books) {
        try {
            requirePresentable(tavro::service::readBook(book));
        } catch (const tavro::service::BookError& error) {
            require(*error.what() != '\0', "a refusal says why");
        }
    }
    return 0;
}
