#pragma once

#include "bookmap.h"

namespace store {

/// One operation on the file of a book map: opened and locked, and closed and so unlocked when it
/// goes. Other operations of the map, which lock for themselves, would give up the lock.
class LockedBookMap {
public:
    explicit LockedBookMap(BookMap& map) : map_(map), locked_(map.LockFile() == 0) {}
    ~LockedBookMap() { map_.UnlockFile(); }
    LockedBookMap(const LockedBookMap&) = delete;
    LockedBookMap& operator=(const LockedBookMap&) = delete;

    /// Whether the file is open and locked; otherwise the map works in memory only.
    explicit operator bool() const { return locked_; }

private:
    BookMap& map_;
    bool locked_;
};

}  // namespace store
