#include "tavroctl/book_file.h"

#include <cstdlib>

#include "account/book_map.h"
#include "account/files.h"
#include "account/session.h"
#include "client/placeholder.h"
#include "program/failure.h"
#include "tavroctl/absolute_path.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// Why the library describes no book for the file `path`.
Failure unknownBook(const Account& account, const std::string& path) {
    const std::string folder = account.downloadFolder();
    if (path.compare(0, folder.size(), folder) != 0)
        return Failure(path + " lies outside the download folder",
                       "name a file of the folder " + folder);
    const fs::path name = fs::path(path).filename();
    const bool placeholder = name.extension() == placeholder::extension && isRegularFile(path);
    if (!placeholder && mappedFiles(account).count(name) == 0)
        return Failure(unknownToBookMap(name).what() + std::string(", and it is no placeholder"),
                       "name one of the files of 'tavroctl map' or a placeholder");
    return Failure("the catalogue has no item for " + path,
                   "run 'tavroctl sync' to fetch the catalogue");
}

}  // namespace

std::string fullPath(const Account& account, const std::string& file) {
    if (account.downloadFolder().empty())
        throw Failure("no download folder is configured", "run 'tavroctl setup' first");
    if (file.find('/') != std::string::npos)
        return absolutePath(file);
    return account.downloadFolder() / file;
}

BookRecord::BookRecord(const Account& account, const std::string& path) {
    openSession(account, Need::Device);  // else the library would register the device
    if (tavro_get_book_info(path.c_str(), &record_) != 0)
        throw unknownBook(account, path);
}

BookRecord::~BookRecord() {
    for (char* text : {record_.title, record_.author, record_.category_id, record_.isbn})
        std::free(text);
}

}  // namespace tavro::tools
