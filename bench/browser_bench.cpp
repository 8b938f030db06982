// What the browser asks about a book, against reading the files in which the answer lies.

#include <lectern.h>

#include <fcntl.h>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "bookmap.h"
#include "posix/file_descriptor.h"
#include "support/bare_expat.h"
#include "support/catalogue_answer.h"
#include "support/device_root.h"
#include "support/require.h"
#include "support/subject.h"
#include "tavro_entry_points.h"

namespace bench {

namespace {

/// A device whose account has `books` books, and one of them with its cover.
struct Library {
    DeviceRoot device;
    std::string book;
    std::string cover;
    std::string content;    ///< what was read; it grows, but is not made anew for each file
    std::string_view last;  ///< the file read last

    explicit Library(std::int64_t books) {
        const std::string item = std::to_string(books / 2);
        book = device.syncFolder() + "/" + item + ".epub";
        cover = device.file(account_files::covers) + "/" + item + ".bmp";
        device.writeAccount();
        writeFile(device.file(account_files::token), "token");
        writeFile(device.file(account_files::catalogue), catalogueAnswer(books));
        writeFile(cover, pixel());
        writeMap(static_cast<int>(books));
    }

    /// Reads the file `name` of the account whole.
    void read(const std::string& name) {
        const std::string path = device.file(name);
        const std::size_t size = std::filesystem::file_size(path);
        if (content.size() < size)
            content.resize(size);
        const posix::FileDescriptor file(::open(path.c_str(), O_RDONLY));
        require(::read(file.get(), content.data(), size) == static_cast<ssize_t>(size),
                path + " is read");
        last = {content.data(), size};
    }

private:
    void writeMap(int books) const {
        BookMap map;
        map.path = device.file(account_files::book_map);
        require(map.LockFile() == 0, "the map opens");
        for (int item = 1; item <= books; ++item)
            map.bookMap[std::to_string(item) + ".epub"] = item;
        map.saveMapInt();
        map.UnlockFile();
    }

    /// A BMP of one pixel, of 24 bits.
    static std::string pixel() {
        std::string bytes(58, '\0');
        for (const auto& [at, byte] : std::initializer_list<std::pair<std::size_t, char>>{{0, 'B'},
                                                                                          {1, 'M'},
                                                                                          {2, 58},
                                                                                          {10, 54},
                                                                                          {14, 40},
                                                                                          {18, 1},
                                                                                          {22, 1},
                                                                                          {26, 1},
                                                                                          {28, 24}})
            bytes[at] = byte;
        return bytes;
    }
};

Subject bookInfo(std::int64_t books) {
    const auto library = std::make_shared<Library>(books);
    const auto ours = [=] {
        tavro_book_info info = {};
        require(tavro_get_book_info(library->book.c_str(), &info) == 0, "the book is known");
        for (char* text : {info.title, info.author, info.category_id, info.isbn})
            std::free(text);
    };
    const auto limit = [=] {
        for (const char* file :
             {account_files::configuration, account_files::catalogue, account_files::book_map})
            library->read(file);
    };
    return {inProcess(ours), inProcess(limit)};
}

Subject bookCover(std::int64_t books) {
    const auto library = std::make_shared<Library>(books);
    const auto expat = std::make_shared<const BareExpat>();
    const auto ours = [=] {
        void* const bitmap = tavro_get_book_cover(library->book.c_str(), 60, 60);
        require(bitmap != nullptr, "the cover is there");
        std::free(bitmap);
    };
    const auto limit = [=] {
        for (const char* file :
             {account_files::configuration, account_files::token, account_files::book_map})
            library->read(file);
        library->read(account_files::catalogue);
        expat->parse(library->last);
        std::free(LoadBitmap(library->cover.c_str()));
    };
    return {inProcess(ours), inProcess(limit)};
}

}  // namespace

std::vector<Family> browserFamilies() {
    const std::vector<std::int64_t> sizes = {100, 1000, 10000};
    return {{"book-info", "books", sizes, bookInfo}, {"book-cover", "books", sizes, bookCover}};
}

}  // namespace bench
