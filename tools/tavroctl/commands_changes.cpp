#include <filesystem>

#include "account/account_lock.h"
#include "account/book_map.h"
#include "account/books.h"
#include "account/changes.h"
#include "account/files.h"
#include "account/journal_backup.h"
#include "account/session.h"
#include "tavroctl/commands.h"
#include "tavroctl/retry_pauses.h"

namespace fs = std::filesystem;

namespace tavro::tools {

namespace {

/// The name of `path` as the book map has it. Throws Failure.
std::string mappedName(const Account& account, const std::string& path) {
    std::string name = fs::path(path).filename();
    if (mappedFiles(account).count(name) == 0)
        throw Failure("the book map does not know " + path,
                      "name one of the files of 'tavroctl map'");
    return name;
}

/// Sees that the map's name `name` would not be taken from another book than that of `oldName`.
void requireUnmapped(const Account& account, const std::string& name, const std::string& oldName) {
    const auto map = mappedFiles(account);
    const auto owner = map.find(name);
    if (owner != map.end() && owner->second != map.at(oldName))
        throw Failure(name + " is the file of another book, item " + std::to_string(owner->second),
                      "make a copy of it under another name");
}

/// Sees that the file `path` lies in the download folder, copying it there if it lies elsewhere,
/// but over no other file than `oldName`. @return its name there.
std::string broughtIntoFolder(const Account& account, const fs::path& path,
                              const std::string& oldName) {
    std::string name = path.filename();
    requireUnmapped(account, name, oldName);
    const fs::path target = account.bookFile(name);
    const fs::path source = fs::is_regular_file(path) || path != name ? path : target;
    if (!fs::is_regular_file(source))
        throw Failure("there is no file " + path.string(), "give the path of the new book file");
    if (fs::exists(target)) {
        if (fs::equivalent(source, target))
            return name;
        if (name != oldName)
            throw Failure(
                target.string() + " is there already and is another file",
                "choose another name for the new file, or give that path to use the file there");
    }
    replaceByCopy(target, source);
    return name;
}

Json asJson(const SyncJournal::Record& change) {
    return {{"old", change.oldName}, {"new", change.newName}, {"uploaded", change.flag}};
}

Json asJson(const std::vector<SyncJournal::Record>& changes) {
    Json json = Json::array();
    for (const auto& change : changes)
        json.push_back(asJson(change));
    return json;
}

void addRows(Table& table, const std::vector<SyncJournal::Record>& changes, const char* state) {
    for (const auto& change : changes)
        table.rows.push_back({change.oldName, change.newName, state});
}

/// Why the last upload of `session` failed, with what that means for the journal.
Failure uploadFailure(const Tavro& session, const std::string& what) {
    return serviceFailure(
        *session.server, what, uploadAddress(),
        "run 'tavroctl replay' later, or 'tavroctl login' if the session has ended");
}

}  // namespace

void replace(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    const std::string oldName = mappedName(account, arguments.oldName);
    const std::string newName = broughtIntoFolder(account, arguments.newPath, oldName);
    const auto change = [&] {
        const RetryPauses pauses(output);
        return replaceBook(*session, account, oldName, newName, arguments.upload);
    }();
    const std::string text = displayable(oldName) + " is replaced by " + displayable(newName);
    output.result(asJson(change), text + (change.flag ? ", which the service has. " : ". ") +
                                      "Next: tavroctl replay");
    if (arguments.upload && !change.flag)
        throw uploadFailure(*session, "the change is in the journal but the upload failed");
}

void replay(const Arguments& arguments, const Output& output) {
    const Account account(arguments.folder);
    const auto session = openSession(account, Need::Session);
    const AccountLock lock(account);
    const auto result = [&] {
        const RetryPauses pauses(output);
        auto done = replayChanges(*session, account);
        if (pauses.areInterrupted())  // the signal ends the program when `pauses` goes
            output.error(Failure(
                "interrupted: " + std::to_string(done.kept.size()) + " changes stay pending",
                "run 'tavroctl replay' again"));
        return done;
    }();
    Table table{{"OLD", "NEW", "RESULT"}, {}};
    addRows(table, result.uploaded, "uploaded");
    addRows(table, result.dropped, "dropped: the book map does not know the old name");
    addRows(table, result.kept, "still pending");
    output.result({{"uploaded", asJson(result.uploaded)},
                   {"dropped", asJson(result.dropped)},
                   {"pending", asJson(result.kept)}},
                  table, "No changes were pending.");
    if (!result.kept.empty())
        throw uploadFailure(*session, std::to_string(result.kept.size()) + " changes stay pending");
}

void showJournal(const Arguments& arguments, const Output& output) {
    const auto changes = pendingChanges(Account(arguments.folder));
    Table table{{"OLD", "NEW", "UPLOADED"}, {}};
    for (const auto& change : changes)
        addRows(table, {change}, change.flag ? "yes" : "not yet");
    output.result(asJson(changes), table, "No changes are pending.");
}

}  // namespace tavro::tools
