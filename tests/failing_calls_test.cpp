// What the tools make of a single call of the system that fails, where the library does not look:
// the kinds of losses that scripts/fault-sweep found.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "account/account_lock.h"
#include "account/book_map.h"
#include "account/books.h"
#include "account/catalogue.h"
#include "account/changes.h"
#include "account/downloads.h"
#include "account/session.h"
#include "program/failure.h"
#include "session/account_keys.h"
#include "support/logged_in_device.h"
#include "tavro-sync/sync_round.h"

using tavro::service::Operation;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace tavro::tools;
namespace fs = std::filesystem;

namespace {

/// The call that fails next: the `number`th of the name `call` for a file called `file`.
struct {
    std::string call;
    std::string file;
    int number = 0;
} failing;

bool fails(const char* call, const fs::path& path) {
    if (failing.call != call || path.filename() != failing.file || --failing.number != 0)
        return false;
    errno = EIO;
    return true;
}

fs::path pathOf(int descriptor) {
    std::error_code none;
    return fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), none);
}

int openReally(const char* path, int flags) {
    return ::openat(AT_FDCWD, path, flags, 0666);
}

}  // namespace

// Stand before the system's, for this program and the library.

extern "C" int open(const char* path, int flags, ...) {
    return fails("open", path) ? -1 : openReally(path, flags);
}

extern "C" std::FILE* fopen(const char* path, const char* mode) {
    const int flags =
        *mode == 'r' ? O_RDONLY : O_RDWR | O_CREAT | (*mode == 'w' ? O_TRUNC : O_APPEND);
    const int file = fails("fopen", path) ? -1 : openReally(path, flags);
    return file == -1 ? nullptr : ::fdopen(file, mode);
}

extern "C" ssize_t write(int descriptor, const void* data, std::size_t size) {
    const iovec bytes{const_cast<void*>(data), size};
    return fails("write", pathOf(descriptor)) ? -1 : ::writev(descriptor, &bytes, 1);
}

extern "C" int remove(const char* path) noexcept {
    if (fails("remove", path))
        return -1;
    const int removed = ::unlinkat(AT_FDCWD, path, 0);
    return removed == -1 && errno == EISDIR ? ::rmdir(path) : removed;
}

extern "C" int stat(const char* path, struct stat* status) noexcept {
    return fails("stat", path) ? -1 : ::fstatat(AT_FDCWD, path, status, 0);
}

extern "C" int flock(int descriptor, int operation) noexcept {
    return fails("flock", pathOf(descriptor))
               ? -1
               : static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}

extern "C" int fstat(int descriptor, struct stat* status) noexcept {
    return fails("fstat", pathOf(descriptor)) ? -1
                                              : ::fstatat(descriptor, "", status, AT_EMPTY_PATH);
}

extern "C" int usleep(useconds_t) {
    return 0;
}

namespace {

/// A device whose account is logged in and has the catalogue.
class FailingCall : public LoggedInDevice {
protected:
    FailingCall() {
        writeFile(folder / "books/third.txt", "The third book.\n");
        synchronise(*openSession(account, Need::Session), account);
    }
    void TearDown() override { failing = {}; }

    void downloadAll() const {
        const auto session = openSession(account, Need::Session);
        for (const BookDescription& book : session->getAddedBooks())
            Downloads(*session, account).fetch(book);
    }

    std::vector<std::string> pendingNames() const {
        std::vector<std::string> names;
        for (const Change& change : pendingChanges(account))
            names.push_back(change.newName);
        return names;
    }
};

}  // namespace

// The library registers a device of which it finds no token; no session survives that.
TEST_F(FailingCall, UnreadTokenEndsNoSession) {
    const std::string token = readFile(account.file(".tavro_token"));
    failing = {"fopen", ".tavro_token", 1};
    EXPECT_THROW(openSession(account, Need::Session), Failure);
    EXPECT_EQ(readFile(account.file(".tavro_token")), token);
    EXPECT_NO_THROW(synchronise(*openSession(account, Need::Session), account));
}

// A session without its session id, a device without its configuration, a service elsewhere.
TEST_F(FailingCall, UnreadSettingsAreNotTakenForMissingOnes) {
    for (int number = 1; number <= 3; ++number) {
        failing = {"open", ".tavro.conf", number};
        try {
            EXPECT_EQ(openSession(account, Need::Session)->sessionID(),
                      account.value(account_keys::session));
        } catch (const Failure&) {
        }
        failing = {"open", ".tavro.conf", number};
        try {
            registerDevice(account, true);
        } catch (const Failure&) {
        }
        failing = {};
        if (!account.isLoggedIn())
            logIn(account, "password");
    }
    for (int number = 1; number <= 2; ++number) {
        TavroServer::baseApiUrl = "elsewhere";
        failing = {"open", "server_connection_data.cfg", number};
        try {
            loadServerSettings();
            EXPECT_NE(TavroServer::baseApiUrl, "elsewhere");
        } catch (const Failure&) {
        }
    }
}

TEST_F(FailingCall, CatalogueIsReadAndKept) {
    for (int number = 1; number <= 2; ++number) {
        const auto session = openSession(account, Need::Session);
        failing = {"open", ".tbooks.xml", number};
        EXPECT_EQ(catalogueOf(*session, account).size(), 3U) << number;
    }
    const std::string catalogue = readFile(account.file(".tbooks.xml"));
    fs::remove(folder / "books/third.txt");
    failing = {"fopen", ".tbooks.xml", 1};
    synchronise(*openSession(account, Need::Session), account);
    EXPECT_NE(readFile(account.file(".tbooks.xml")), catalogue);
}

// Where one write of a record fails and the next does not, the map reads as other names and items.
TEST_F(FailingCall, FailedWriteMakesNoWrongBookMap) {
    downloadAll();
    const auto map = mappedFiles(account);
    const auto book = openSession(account, Need::Session)->getAddedBooks().front();
    const auto name = presentFiles(account).at(itemNumber(book)).front();
    for (int number = 1; number <= 6; ++number) {
        fs::remove(account.bookFile(name));
        failing = {"write", ".tavro.lst", number};
        EXPECT_EQ(Downloads(*openSession(account, Need::Session), account).fetch(book), name);
        EXPECT_EQ(mappedFiles(account), map) << number;
    }
    const auto session = openSession(account, Need::Session);
    Downloads downloads(*session, account);
    failing = {"write", ".tavro.lst_saved", 1};
    EXPECT_NO_THROW(downloads.fetch(book)) << "the book is there, and its entry";
    EXPECT_NO_THROW(downloads.fetch(book)) << "which brings the copy up to date";
    const auto more = mappedFiles(account);
    EXPECT_EQ(more.size(), map.size() + 2);
    fs::remove(account.file(".tavro.lst"));
    EXPECT_NO_THROW(AccountLock{account});
    EXPECT_EQ(mappedFiles(account), more);
}

TEST_F(FailingCall, CutJournalRecordCostsNoOther) {
    journalChange("first.txt", "first-2.txt");
    fs::copy_file(journal, journal + "_replaying");
    fs::resize_file(journal, fs::file_size(journal) - 3);  // a replay was killed
    for (const char* file : {".tavro_journal_replaying", ".tavro_journal"})
        for (int number = 1; number <= 2; ++number) {
            failing = {"fstat", file, number};  // what cannot be mapped is not empty
            try {
                const AccountLock lock(account);
            } catch (const Failure&) {
            }
            failing = {};
            EXPECT_TRUE(fs::exists(journal + "_replaying") || !pendingNames().empty()) << file;
        }
    EXPECT_NO_THROW(AccountLock{account});
    EXPECT_THAT(pendingNames(), ElementsAre("first-2.txt"));

    downloadAll();
    for (int number = 1; number <= 3; ++number) {
        const auto session = openSession(account, Need::Session);
        failing = {"write", ".tavro_journal", number};
        EXPECT_THROW(replaceBook(*session, account, "second.txt", "second-2.txt", false), Failure);
        EXPECT_THAT(pendingNames(), ElementsAre("first-2.txt"));
    }
    replaceBook(*openSession(account, Need::Session), account, "second.txt", "second-2.txt", false);
    EXPECT_THAT(pendingNames(), ElementsAre("first-2.txt", "second-2.txt"));
}

// A replay does what it says, and is soon made good, whichever access to the journal fails.
TEST_F(FailingCall, ReplayedChangesAreSentAndNoLongerPending) {
    downloadAll();
    for (int number = 1; number <= 20; ++number) {
        const std::string text = "corrected " + std::to_string(number);
        writeFile(account.bookFile("first.txt"), text);
        journalChange("first.txt", "first.txt");
        bool done = false;
        try {
            const AccountLock lock(account);
            const auto session = openSession(account, Need::Session);
            failing = {"open", ".tavro_journal", number};
            done = replayChanges(*session, account).uploaded.size() == 1;
        } catch (const Failure&) {
        }
        failing = {};
        EXPECT_TRUE(!done || pendingChanges(account).empty()) << number;
        const AccountLock lock(account);
        replayChanges(*openSession(account, Need::Session), account);
        EXPECT_THAT(pendingNames(), IsEmpty()) << number;
    }
    EXPECT_GE(service.count(Operation::UploadContent), 20U);
    EXPECT_EQ(mappedFiles(account).size(), 3U);
}

// Its second download would stand beside it for ever.
TEST_F(FailingCall, BookThatCannotBeLookedAtIsNotMissing) {
    downloadAll();
    failing = {"stat", "first.txt", 1};
    EXPECT_THROW(presentFiles(account), Failure);
    journalChange("second.txt", "first.txt");
    failing = {"stat", "first.txt", 1};
    EXPECT_THROW(isWaitingForFile(account, pendingChanges(account).front()), Failure);
}

// The old file may be gone, and a refused upload must not fetch the old text again.
TEST_F(FailingCall, BookWhoseNewFileWaitsIsNotMissing) {
    downloadAll();
    fs::rename(account.bookFile("first.txt"), account.bookFile("first-2.txt"));
    journalChange("first.txt", "first-2.txt");
    const int item = mappedFiles(account).at("first.txt");
    EXPECT_THAT(presentFiles(account)[item], ElementsAre("first-2.txt"));
}

// At no moment does one account's session stand beside the address of another.
TEST_F(FailingCall, AnotherAddressEndsTheSessionAtOnce) {
    account.store({{account_keys::email, "boris@reader.example"}});
    EXPECT_FALSE(Account(account.folder()).isLoggedIn());
    EXPECT_FALSE(fs::exists(account.file(".tavro_vendor_token")));
    writeFile(account.file(".tavro_vendor_token"), "left by an interrupted call");
    account.store({{account_keys::email, "boris@reader.example"}});
    EXPECT_FALSE(fs::exists(account.file(".tavro_vendor_token")));
}

// Only somebody else's lock means that somebody else is at work; no reason is one of another call.
TEST_F(FailingCall, ReasonIsThatOfTheCallThatFailed) {
    const auto reasonOf = [](auto action) {
        errno = ENOSPC;
        try {
            action();
        } catch (const Failure& failure) {
            return std::string(failure.what());
        }
        return std::string();
    };
    const std::string settings = account.file(".tavro.conf");
    failing = {"flock", ".tavro_sync_lock", 1};
    EXPECT_EQ(reasonOf([&] { AccountLock{account}; }),
              "cannot lock " + account.file(".tavro_sync_lock") + ": Input/output error");
    failing = {"open", ".tavro.conf", 1};
    EXPECT_EQ(reasonOf([&] { account.forgetSession(); }), "cannot read " + settings);
    fs::remove(settings);
    fs::create_directory(settings);
    EXPECT_EQ(reasonOf([&] {
                  storeSettings(settings, {{"key", "value"}});
              }),
              "cannot read " + settings + ": Is a directory");
}

TEST_F(FailingCall, RoundThatSucceedsLeavesNoPlaceholder) {
    const std::string first = std::to_string(service.books().front().id) + ".file";
    failing = {"remove", first, 1};
    const ActivityLog log(account.file(".tavro_sync.log"));
    EXPECT_TRUE(SyncRound(account, log).run());
    EXPECT_FALSE(fs::exists(account.bookFile(first)));
    EXPECT_EQ(presentFiles(account).size(), 3U);
}
