#include <unistd.h>

#include <cstdio>

#include "syncjournal.h"
#include "tavro.h"

namespace {

constexpr int upload_attempts = 5;
constexpr useconds_t pause_microseconds = 5000000;

/// The part of `path` behind its last "/".
std::string fileName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// Uploads the file `path` as the content of item `itemId`, with a pause after every attempt that
/// fails, the last one included. @return whether the service took it.
bool uploadWithRetries(TavroServer& server, int itemId, const std::string& path) {
    for (int attempt = 0; attempt < upload_attempts; ++attempt) {
        if (server.uploadContent(std::to_string(itemId), path) == 0)
            return true;
        ::usleep(pause_microseconds);
    }
    return false;
}

}  // namespace

bool Tavro::updateACSM(const std::string& oldPath, const std::string& newPath, bool upload) {
    if (!hasSession())
        return false;
    SyncJournal::Record record{fileName(oldPath), fileName(newPath), false};
    const std::map<std::string, int>& books = bookMap.GetBookMap();
    const auto book = books.find(record.oldName);
    if (book == books.end())
        return false;
    if (upload)
        record.flag =
            uploadWithRetries(*server, book->second, downloadFolderPath + "/" + record.newName);
    // Journalled even when uploaded: the book map follows at the next replay.
    SyncJournal(configPath(journal_file)).push(record);
    return true;
}

bool Tavro::syncDownloadFolder() {
    if (!hasSession())
        return false;
    syncJournal();
    return true;
}

void Tavro::syncJournal() {
    if (!server)
        return;
    SyncJournal journal(configPath(journal_file));
    journal.reload();
    journal.clearFile();
    for (SyncJournal::Record record; journal.pop(record);) {
        std::fprintf(stderr, "Replay journal: old=%s new=%s flag=%u\n", record.oldName.c_str(),
                     record.newName.c_str(), static_cast<unsigned>(record.flag));
        const std::map<std::string, int>& books = bookMap.GetBookMap();
        const auto book = books.find(record.oldName);
        if (book == books.end())
            continue;
        const int itemId = book->second;
        if (uploadWithRetries(*server, itemId, downloadFolderPath + "/" + record.newName))
            record.flag = true;
        if (!record.flag) {
            journal.push(record);
            continue;
        }
        bookMap.Remove(record.oldName);
        bookMap.Add(record.newName, itemId);
    }
}
