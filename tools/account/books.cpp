#include "account/books.h"

#include "account/book_map.h"
#include "account/catalogue.h"
#include "account/files.h"
#include "account/journal.h"
#include "account/present_files.h"
#include "account/service_failure.h"
#include "program/failure.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// Sees that the new file `name` is on the disk, and that the book map, which was `before`, has it
/// as the book `item`. A file of which that is not certain goes again: the book would be downloaded
/// a second time beside it.
void recordOrRemove(const Account& account, const MappedFiles& before, const std::string& name,
                    int item) {
    auto expected = before;
    expected[name] = item;
    try {
        flush(account.bookFile(name));  // the library leaves that to the system
        requireBookMap(account, before, expected);
    } catch (...) {
        std::error_code ignored;
        fs::remove(account.bookFile(name), ignored);
        throw;
    }
}

/// Whether `file`, which begins with the download folder, lies elsewhere.
bool leadsOut(const Account& account, const fs::path& file) {
    const fs::path name = file.lexically_relative(account.downloadFolder()).lexically_normal();
    return !name.empty() && *name.begin() == "..";
}

/// Tells that the service announced the name `file` for a book.
Failure outside(const std::string& file) {
    return Failure("the announced name leads out of the download folder, to " + file,
                   "have the service give the book a plain name");
}

/// Tells why a download has brought no file.
Failure nothingCame(const Account& account) {
    if (const std::string announced = PresentFilesStay::spared(); leadsOut(account, announced))
        return outside(announced);
    return Failure("no whole file came from " + downloadAddress(),
                   "run 'tavroctl sync' to see whether service and session are alive, add --trace "
                   "to see the exchange");
}

}  // namespace

std::map<int, std::vector<std::string>> presentFiles(const Account& account) {
    const std::string folder = account.downloadFolder().string() + "/";
    std::map<int, std::vector<std::string>> present;
    const auto map = mappedFiles(account);
    for (const auto& [name, item] : map)
        if (isRegularFile(folder + name))
            present[item].push_back(name);
    for (const Change& change : pendingChanges(account))
        if (const auto book = map.find(change.oldName); book != map.end() &&
                                                        map.count(change.newName) == 0 &&
                                                        isRegularFile(folder + change.newName))
            present[book->second].push_back(change.newName);
    return present;
}

void requireDownloadFolder(const Account& account) {
    const std::string folder = account.downloadFolder();
    if (exists(folder))
        return;
    if (!mappedFiles(account).empty())
        throw Failure("the download folder " + folder + " is missing", missing_folder_advice);
    fs::create_directories(folder);
}

std::string downloadBook(Tavro& session, const Account& account, const BookDescription& book) {
    const auto before = mappedFiles(account);
    std::string name = [&] {
        const PresentFilesStay presentFilesStay;
        return session.downloadBook(book);
    }();
    if (name.empty())
        throw nothingCame(account);
    const std::string file = account.bookFile(name);
    if (!isRegularFile(file))
        throw Failure("the download could not be given its name " + name,
                      "check the permissions of " + account.downloadFolder().string());
    if (leadsOut(account, file)) {
        removeFile(file);
        throw outside(file);
    }
    recordOrRemove(account, before, name, itemNumber(book));
    repairAndCopyBookMap(account);
    return name;
}

}  // namespace tavro::tools
