#pragma once

#include <string>
#include <vector>

/// The sync journal: book files that were replaced on the device and still have to reach the
/// service.
///
/// Any process appends a record with `push` under a whole-file `lockf` lock; a replay loads the
/// records with `reload`, empties the file with `clearFile`, takes them one by one with `pop` and
/// pushes back what it could not send. Used by one thread at a time. docs/file-formats.md shows the
/// file's bytes.
class [[gnu::visibility("default")]] SyncJournal {
public:
    /// One replaced book file. Names are relative to the sync folder and hold no zero byte.
    struct Record {
        std::string oldName;  ///< name that the book map knows
        std::string newName;  ///< name of the file that replaced it
        bool flag = false;    ///< an upload of the new file has succeeded
    };

    /// Makes a journal on a file. Touches no file.
    ///
    /// @param path full path of the file.
    explicit SyncJournal(const std::string& path);

    /// Replaces the records in memory by those of the file. They stay as they were when the file
    /// is missing, empty or cannot be read. A cut or corrupt tail is left out; all complete
    /// records before it load. Never waits for a writer.
    ///
    /// @return -1 when the file could not be opened, otherwise the result of closing it.
    int reload();

    /// Empties the file, creating it if missing. The records in memory stay.
    ///
    /// @return -1 when the file could not be opened, otherwise the result of closing it.
    int clearFile();

    /// @return number of records in memory.
    unsigned count() const;

    /// Takes the last record in memory; the newest record of the file comes first.
    ///
    /// @param out the record taken.
    /// @return true, or false with `out` unchanged when there is none.
    bool pop(Record & out);

    /// Appends a record to the file, creating it (mode 0600) if missing, and waits for the file's
    /// lock. Writes are not checked. The records in memory stay.
    ///
    /// @param record what to append.
    /// @return -1 when the file could not be opened, otherwise the result of closing it.
    int push(const Record& record);

private:
    std::string path;
    std::vector<Record> records;
};
