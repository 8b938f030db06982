#include "books/book_error.h"
#include "books/book_file.h"
#include "books/format_readers.h"

namespace tavro::service {

BookDetails readPdf(const std::filesystem::path& path) {
    if (readStart(path, 1024).find("%PDF-") == std::string::npos)
        throw BookError("not a PDF document");
    return {};
}

}  // namespace tavro::service
