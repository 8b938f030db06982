#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "account/account_lock.h"
#include "account/book_map.h"
#include "account/books.h"
#include "account/changes.h"
#include "account/files.h"
#include "account/session.h"
#include "tavroctl/change_report.h"
#include "tavroctl/command_line.h"
#include "tavroctl/retry_pauses.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

struct Options {
    std::string oldName;
    std::string newPath;
    bool upload = false;
};

/// The name of `path` as the book map `map` has it. Throws Failure.
std::string mappedName(const MappedFiles& map, const std::string& path) {
    std::string name = fs::path(path).filename();
    if (map.count(name) == 0)
        throw unknownToBookMap(path);
    return name;
}

/// Sees that the name `name` would not be taken from another book than that of `oldName`.
void requireUnmapped(const MappedFiles& map, const std::string& name, const std::string& oldName) {
    const auto owner = map.find(name);
    if (owner != map.end() && owner->second != map.at(oldName))
        throw Failure(name + " is the file of another book, item " + std::to_string(owner->second),
                      "make a copy of it under another name");
}

/// Whether two files hold the same bytes. Reads them piece by piece.
bool hasSameContent(const fs::path& left, const fs::path& right) {
    std::ifstream one(left, std::ios::binary);
    std::ifstream other(right, std::ios::binary);
    using Bytes = std::istreambuf_iterator<char>;
    return one && other && std::equal(Bytes(one), Bytes(), Bytes(other), Bytes());
}

/// Makes the file `path` the file `target` of the download folder, copying it there if it lies
/// elsewhere, but over no other file than `oldName`. Throws Failure.
void bringIntoFolder(const fs::path& path, const fs::path& target, const std::string& oldName) {
    const fs::path source = isRegularFile(path) || path != target.filename() ? path : target;
    if (!isRegularFile(source))
        throw Failure("there is no file " + path.string(), "give the path of the new book file");
    if (exists(target)) {
        if (std::error_code unlike; fs::equivalent(source, target, unlike))
            return;
        if (hasSameContent(source, target))  // an interrupted call brought it already
            return;
        if (target.filename() != oldName)
            throw Failure(
                target.string() + " is there already and is another file",
                "choose another name for the new file, or give that path to use the file there");
    }
    replaceByCopy(target, source);
}

void replace(const Options& options, const Account& account, const Output& output) {
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    const MappedFiles map = mappedFiles(account);
    const std::string oldName = mappedName(map, options.oldName);
    const std::string newName = fs::path(options.newPath).filename();
    requireUnmapped(map, newName, oldName);
    requireDownloadFolder(account);
    bringIntoFolder(options.newPath, account.bookFile(newName), oldName);
    const Change change = [&] {
        RetryPauses pauses(output, *session);
        if (options.upload)
            pauses.beginUpload(newName);
        return replaceBook(*session, account, oldName, newName, options.upload);
    }();
    const std::string text = displayable(oldName) + " is replaced by " + displayable(newName);
    output.result(asJson(change), text + (change.flag ? ", which the service has. " : ". ") +
                                      "Next: tavroctl replay");
    if (options.upload && !change.flag)
        throw uploadFailure(*session, "the change is in the journal but the upload failed");
}

}  // namespace

void addReplace(CommandLine& commandLine) {
    const auto options = std::make_shared<Options>();
    CLI::App& command =
        commandLine.add("replace", "Replace a book's file and journal that for the service",
                        "replace novel.epub corrected/novel-2.epub", withOptions(replace, options));
    command.add_option("OLD", options->oldName, "A file of 'tavroctl map'")->required();
    command.add_option("NEW", options->newPath, "Path of the new file")->required();
    command.add_flag("--upload", options->upload,
                     "Upload it at once: 5 attempts, 5 seconds after each that fails");
}

}  // namespace tavro::tools
