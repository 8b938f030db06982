/// The reader of EPUB books on archives that are sound but hold anything: check sums would stop
/// almost all that is changed in a finished archive. Promises as for all books; a cover that cannot
/// be read costs the book nothing else.

#include <fuzzer/FuzzedDataProvider.h>
#include <zip.h>

#include <string>

#include "book_promises.h"
#include "books/book_reader.h"
#include "support/temporary_folder.h"

namespace {

void add(zip_t* archive, const char* name, const std::string& content) {
    zip_source_t* const source = zip_source_buffer(archive, content.data(), content.size(), 0);
    const zip_int64_t index = zip_file_add(archive, name, source, ZIP_FL_OVERWRITE);
    require(index >= 0, "an entry can be added");
    zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0);
}

void writeArchive(const std::string& path, const std::string& package, const std::string& cover) {
    zip_t* const archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    require(archive != nullptr, "an archive can be made");
    const std::string container = R"(<container><rootfile full-path="a/b.opf"/></container>)";
    add(archive, "META-INF/container.xml", container);
    add(archive, "a/b.opf", package);
    add(archive, "a/cover.jpg", cover);
    require(zip_close(archive) == 0, "an archive can be written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    const std::string path = folder / "book.epub";
    FuzzedDataProvider input(data, size);
    const std::string cover =
        "\xFF\xD8\xFF" + input.ConsumeBytesAsString(input.ConsumeIntegral<std::uint8_t>());
    writeArchive(path, input.ConsumeRemainingBytesAsString(), cover);
    try {
        const auto details = tavro::service::readBook(path);
        requirePresentable(details);
        require(details.cover.empty() || details.cover == cover, "a cover is one of the archive");
    } catch (const tavro::service::BookError& error) {
        require(*error.what() != '\0', "a refusal says why");
    }
    return 0;
}
