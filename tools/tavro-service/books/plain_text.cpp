#include "books/book_file.h"
#include "books/format_readers.h"

namespace tavro::service {

BookDetails readPlainText(const std::filesystem::path& path) {
    readStart(path, 1);
    return {};
}

}  // namespace tavro::service
