#include "account/downloads.h"

#include <filesystem>

#include "account/book_map.h"
#include "account/catalogue.h"
#include "account/files.h"
#include "account/present_files.h"
#include "account/service_failure.h"
#include "program/failure.h"
#include "transport/partial_file.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// Tells that the service announced the name `file` for a book.
Failure outside(const std::string& file) {
    return Failure("the announced name leads out of the download folder, to " + file,
                   "have the service give the book a plain name");
}

/// Tells why a download has brought no file.
Failure nothingCame(const Account& account) {
    const std::string announced = PresentFilesStay::spared();
    const std::string folder = account.downloadFolder();
    if (announced.size() > folder.size() && leadsOut(announced.substr(folder.size()))) {
        removeFile(announced + transport::partial_suffix);
        return outside(announced);
    }
    return Failure("no whole file came from " + downloadAddress(),
                   "run 'tavroctl sync' to see whether service and session are alive, add --trace "
                   "to see the exchange");
}

}  // namespace

Downloads::Downloads(Tavro& session, const Account& account)
    : session_(session), account_(account), map_(account) {}

std::string Downloads::fetch(const BookDescription& book) {
    map_.prepare();
    std::string name = [&] {
        const PresentFilesStay presentFilesStay;
        return session_.downloadBook(book);
    }();
    if (name.empty())
        throw nothingCame(account_);
    const std::string file = account_.bookFile(name);
    if (leadsOut(name)) {
        removeFile(file);
        forgetBook(account_, name);
        throw outside(file);
    }
    if (!isRegularFile(file))
        throw Failure("the download could not be given its name " + name,
                      "check the permissions of " + account_.downloadFolder().string());
    const int item = itemNumber(book);
    recordOrRemove(name, item);
    map_.copy(name, item);
    return name;
}

/// Sees that the new file `name` is on the disk, and that the book map has it as the book `item`. A
/// file of which that is not certain goes again: the book would be downloaded a second time beside
/// it.
void Downloads::recordOrRemove(const std::string& name, int item) {
    try {
        flush(account_.bookFile(name));  // the library leaves that to the system
        map_.require(name, item);
    } catch (...) {
        std::error_code ignored;
        fs::remove(account_.bookFile(name), ignored);
        throw;
    }
}

}  // namespace tavro::tools
