#include "account/books.h"

#include "account/book_map.h"
#include "account/catalogue.h"
#include "account/failure.h"
#include "account/files.h"
#include "account/present_files.h"
#include "platform/account_files.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// Sees that the book map, which the library writes without a look at the outcome, has the file
/// `name` with `item`. Throws Failure.
void requireEntry(const Account& account, const std::string& name, int item) {
    const auto map = mappedFiles(account);
    if (const auto entry = map.find(name); entry == map.end() || entry->second != item)
        throwNotWritten(account.file(account_files::book_map));
}

}  // namespace

std::map<int, std::vector<std::string>> presentFiles(const Account& account) {
    const std::string folder = account.downloadFolder().string() + "/";
    std::map<int, std::vector<std::string>> present;
    for (const auto& [name, item] : mappedFiles(account))
        if (isRegularFile(folder + name))
            present[item].push_back(name);
    return present;
}

void requireDownloadFolder(const Account& account) {
    const std::string folder = account.downloadFolder();
    if (exists(folder))
        return;
    if (!mappedFiles(account).empty())
        throw Failure("the download folder " + folder + " is missing",
                      "insert the card that it lies on, or name another folder with 'tavroctl "
                      "setup --folder'");
    fs::create_directories(folder);
}

std::string downloadBook(Tavro& session, const Account& account, const BookDescription& book) {
    const std::string name = [&] {
        const PresentFilesStay presentFilesStay;
        return session.downloadBook(book);
    }();
    if (name.empty())
        throw Failure(
            "no whole file came from " + downloadAddress(),
            "run 'tavroctl sync' to see whether service and session are alive, add --trace "
            "to see the exchange");
    const std::string file = account.bookFile(name);
    if (!isRegularFile(file))
        throw Failure("the download could not be given its name " + name,
                      "check the permissions of " + account.downloadFolder().string());
    try {
        requireEntry(account, name, itemNumber(book));
    } catch (const Failure&) {
        std::error_code ignored;
        fs::remove(file, ignored);
        throw;
    }
    repairAndCopyBookMap(account);
    return name;
}

}  // namespace tavro::tools
