#include "account/downloads.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>

#include "account/book_map.h"
#include "account/catalogue.h"
#include "account/files.h"
#include "account/own_files.h"
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
    : session_(session),
      account_(account),
      map_(account),
      lockFile_(::open(account.file(own_files::account_lock).c_str(), O_PATH | O_CLOEXEC)) {}

std::string Downloads::fetch(const BookDescription& book) {
    requireAccount();  // else the map is another account's
    map_.prepare();
    std::string name = [&] {
        const PresentFilesStay presentFilesStay;
        return session_.downloadBook(book);
    }();
    if (name.empty())
        throw nothingCame(account_);
    if (isAccountGone())
        discard(name);
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
    copy(name, item);
    return name;
}

/// Whether a log-out has taken the account away, and with it the file of its lock. One that cannot
/// be asked, as a 32-bit machine's after 2038, is taken for there.
bool Downloads::isAccountGone() const {
    struct stat status = {};
    return ::fstat(lockFile_.get(), &status) == 0 && status.st_nlink == 0;
}

/// Sees that the account is still there: the books of a former one are none of the next one's.
/// Throws Failure.
void Downloads::requireAccount() const {
    if (isAccountGone())
        throw Failure("the account was logged out meanwhile");
}

/// Removes the file `name`, which came after the log-out had removed all others, and tells why.
void Downloads::discard(const std::string& name) const {
    std::error_code ignored;
    fs::remove(account_.bookFile(name), ignored);
    requireAccount();
}

/// Copies the new entry. The book is there, and so is its entry: where the disk is full now, the
/// copy is tried again before the next book, and by the next command.
void Downloads::copy(const std::string& name, int item) {
    try {
        map_.copy(name, item);
    } catch (const Failure&) {
        return;
    }
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
