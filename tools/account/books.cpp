#include "account/books.h"

#include "account/book_map.h"
#include "account/failure.h"

namespace fs = std::filesystem;

namespace tavro::tools {

std::map<int, std::vector<std::string>> presentFiles(const Account& account) {
    const std::string folder = account.downloadFolder().string() + "/";
    std::map<int, std::vector<std::string>> present;
    for (const auto& [name, item] : mappedFiles(account))
        if (fs::is_regular_file(folder + name))
            present[item].push_back(name);
    return present;
}

std::string downloadBook(Tavro& session, const Account& account, const BookDescription& book) {
    const fs::path folder = account.downloadFolder();
    std::string name = session.downloadBook(book);
    if (name.empty())
        throw Failure(
            "no whole file came from " + downloadAddress(),
            "run 'tavroctl sync' to see whether service and session are alive, add --trace "
            "to see the exchange");
    if (!fs::is_regular_file(folder.string() + "/" + name))
        throw Failure("the download could not be given its name " + name,
                      "check the permissions of " + folder.string());
    repairAndCopyBookMap(account);
    return name;
}

}  // namespace tavro::tools
