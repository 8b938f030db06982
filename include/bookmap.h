#pragma once

#include <map>
#include <string>

/// The list file: which book file of the sync folder belongs to which item of the service.
///
/// Several processes share the file, so every operation opens it, takes an exclusive `flock` on it
/// (waiting for it), loads it whole, and rewrites it whole if it changed something; closing the
/// descriptor releases the lock. Outside an operation nothing is locked. A file that cannot be
/// opened is logged; the operation then works on the maps in memory only. Used by one thread at a
/// time within a process. docs/file-formats.md shows the file's bytes.
class [[gnu::visibility("default")]] BookMap {
public:
    /// Records that a book file belongs to an item, replacing an earlier item of the same file.
    ///
    /// @param path the book file, relative to the sync folder.
    /// @param id item ID.
    void Add(const std::string& path, int id);

    /// Forgets a book file.
    ///
    /// @param path the book file, relative to the sync folder; nothing changes if it is not known.
    void Remove(const std::string& path);

    /// Loads the file.
    ///
    /// @return item IDs by book file. Valid until the next operation; copy it to keep it.
    const std::map<std::string, int>& GetBookMap();

    /// Loads the file.
    ///
    /// @return book files by item ID; of several with the same ID the last one in byte order.
    std::map<int, std::string> GetIdMap();

    /// Opens the file, creating it if missing, and waits for its lock.
    ///
    /// The lock is of this object's descriptor: while it is held, an operation of another `BookMap`
    /// on the same file blocks for ever, in this process and thread as well. `Add`, `Remove`,
    /// `GetBookMap` and `GetIdMap` of this object open the file anew and give the lock up, so
    /// between `LockFile` and `saveMapInt` only `loadMapInt` and the maps themselves are used.
    ///
    /// @return 0, or -1 with `fd_` -1 when the file cannot be opened (logged) or locked.
    int LockFile();

    /// Closes the file and so releases the lock; nothing happens when it is not open.
    void UnlockFile();

    /// Replaces both maps by the content of the open, locked file. A cut or corrupt tail is left
    /// out; all complete records before it load.
    ///
    /// @return 0, or -1 with the maps as they were when no file is open or it cannot be mapped,
    ///     which includes an empty file.
    int loadMapInt();

    /// Rewrites the open, locked file from `bookMap`, records in ascending order of path. Writes
    /// are not checked.
    ///
    /// @return 0, or -1 when no file is open.
    int saveMapInt();

    /// Item IDs by book file name, as last loaded or changed.
    std::map<std::string, int> bookMap;

    /// Book file names by item ID; made from the file at each load, never written.
    std::map<int, std::string> idMap;

    /// Descriptor of the open, locked file, or -1.
    int fd_ = -1;

    /// Full path of the file; the owner sets it before the first operation.
    std::string path;
};
