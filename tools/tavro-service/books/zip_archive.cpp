#include "books/zip_archive.h"

#include <array>

#include "books/book_format.h"

namespace tavro::service {

ZipArchive::ZipArchive(const std::filesystem::path& path)
    : archive_(zip_open(path.c_str(), ZIP_RDONLY, nullptr)) {
    if (!archive_)
        throw BookError("not a readable zip archive");
}

std::vector<std::string> ZipArchive::names() const {
    std::vector<std::string> names;
    const zip_int64_t count = zip_get_num_entries(archive_.get(), 0);
    for (zip_int64_t index = 0; index < count; ++index) {
        const auto place = static_cast<zip_uint64_t>(index);
        if (const char* const name = zip_get_name(archive_.get(), place, 0))
            names.emplace_back(name);
    }
    return names;
}

std::string ZipArchive::read(const std::string& name, std::size_t limit) const {
    struct Close {
        void operator()(zip_file_t* file) const { zip_fclose(file); }
    };
    const std::unique_ptr<zip_file_t, Close> entry(zip_fopen(archive_.get(), name.c_str(), 0));
    if (!entry)
        throw BookError("no readable entry \"" + name + "\"");
    std::string content;
    std::array<char, 16384> buffer;
    for (;;) {
        const zip_int64_t got = zip_fread(entry.get(), buffer.data(), buffer.size());
        if (got < 0)
            throw BookError("damaged entry \"" + name + "\"");
        if (got == 0)
            return content;
        content.append(buffer.data(), static_cast<std::size_t>(got));
        if (content.size() > limit)
            throw BookError("entry \"" + name + "\" is too large");
    }
}

}  // namespace tavro::service
