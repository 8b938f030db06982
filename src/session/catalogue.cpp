#include <fcntl.h>

#include <lectern.h>

#include <array>

#include "posix/file_descriptor.h"
#include "posix/files.h"
#include "posix/read_only_mapping.h"
#include "tavro.h"

namespace {

/// The platform's hash of the content of the file `path`; empty when it has none.
std::string bookHash(const std::string& path) {
    std::array<char, 256> buffer = {};
    const int length = FastBookHash(path.c_str(), buffer.data(), int{buffer.size()});
    return length < 1 ? std::string()
                      : std::string(buffer.data(), static_cast<std::size_t>(length));
}

}  // namespace

bool Tavro::syncServer() {
    if (!hasSession())
        return false;
    if (server->syncWithCloud("0") == 1)
        return false;
    writeXML(server->getLastXMLAnswer());
    return true;
}

void Tavro::writeXML(const std::vector<char>& data) {
    posix::overwriteUnchecked(configPath(tavro_books), "wb", data.data(), data.size());
}

const std::vector<BookDescription>& Tavro::getAddedBooks() const {
    if (server && !server->getAddedBooks().empty())
        return server->getAddedBooks();
    static const std::vector<BookDescription> none;
    const std::string path = configPath(tavro_books);
    const std::string hash = bookHash(path);
    if (hash == booksFileHash)
        return parser->addedItems;
    const posix::FileDescriptor file(::open(path.c_str(), O_RDONLY));
    if (!file)
        return none;
    const posix::ReadOnlyMapping mapping(file.get());
    if (!mapping)
        return none;
    parser->init("utf-8");
    parser->parse(mapping.data(), static_cast<unsigned>(mapping.size()));
    booksFileHash = hash;
    return parser->addedItems;
}

std::map<std::string, int> Tavro::GetBooks() {
    return bookMap.GetBookMap();
}

std::map<int, std::string> Tavro::GetBooksIds() {
    return bookMap.GetIdMap();
}
