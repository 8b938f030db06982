#include "account/book_map.h"
#include "account/files.h"
#include "tavroctl/account_steps.h"
#include "tavroctl/command_line.h"

namespace tavro::tools {

namespace {

void showMap(const Account& account, const Output& output) {
    const std::string folder = account.downloadFolder().string() + "/";
    Listing listing{"FILE", "ITEM", "STATE"};
    for (const auto& [name, item] : mappedFiles(account)) {
        const bool present = isRegularFile(folder + name);
        const std::string number = std::to_string(item);
        listing.add({{"file", name}, {"item", number}, {"present", present}},
                    {name, number, present ? "present" : "missing"});
    }
    const std::string step = missingStep(account);
    output.list(listing, "No files are mapped yet. Next: " +
                             (step.empty() ? "tavroctl download --all" : step));
}

}  // namespace

void addMap(CommandLine& commandLine) {
    commandLine.add("map", "Show which file belongs to which item", "map", showMap);
}

}  // namespace tavro::tools
