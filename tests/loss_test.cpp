// What tools do for an account when files cannot be read or written, a card is missing, or a
// process was killed: no book and no change is ever lost, and what fails says so.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>

#include "account/account_lock.h"
#include "account/book_map.h"
#include "account/books.h"
#include "account/catalogue.h"
#include "account/changes.h"
#include "account/downloads.h"
#include "account/kept_book_map.h"
#include "account/own_files.h"
#include "account/session.h"
#include "platform/account_files.h"
#include "posix/atomic_file.h"
#include "posix/temporary_file.h"
#include "program/failure.h"
#include "support/logged_in_device.h"
#include "support/processes.h"
#include "tavro_client.h"

using namespace tavro::tools;
using tavro::service::Operation;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

namespace {

/// A logged-in account with both of its books downloaded.
class Loss : public LoggedInDevice {
protected:
    Loss() {
        const AccountLock lock(account);
        session = openSession(account, Need::Session);
        synchronise(*session, account);
        for (const auto& book : session->getAddedBooks())
            Downloads(*session, account).fetch(book);
    }

    std::string book(const std::string& name) const { return device.syncFolder() + "/" + name; }

    std::string mapFile() const { return device.file(account_files::book_map); }

    /// What `action` says when it fails; empty when it does not.
    template <typename Action>
    static std::string failureOf(Action action) {
        try {
            action();
        } catch (const Failure& failure) {
            return failure.what();
        }
        return {};
    }

    /// Puts a link that leads to itself in the place of the file `path`, which then can be neither
    /// read nor written, not even by root. @return what brings it back when it goes.
    static auto blocked(const std::string& path) {
        fs::rename(path, path + ".aside");
        fs::create_symlink(path, path);
        return std::shared_ptr<void>(nullptr, [path](void*) {
            fs::remove(path);
            fs::rename(path + ".aside", path);
        });
    }

    std::unique_ptr<Tavro> session;
};

}  // namespace

// Between the attempts of an upload; stands before the system's.
extern "C" int usleep(useconds_t) {
    return 0;
}

// A map cut while it is rewritten, with the old files gone: the changes must still find their
// books.
TEST_F(Loss, CutBookMapKeepsWhatFilesAndPendingChangesName) {
    const auto map = mappedFiles(account);
    for (const char* number : {"1", "2"})
        writeFile(book(std::string("new") + number), std::string("edition ") + number);
    journalChange("first.txt", "new1");
    journalChange("second.txt", "new2");
    fs::rename(journal, account.file(".tavro_journal_replaying"));
    fs::remove(book("first.txt"));
    fs::remove(book("second.txt"));
    fs::resize_file(mapFile(), 0);
    const AccountLock lock(account);
    EXPECT_EQ(mappedFiles(account), map);
    const auto result = replayChanges(*session, account);
    EXPECT_EQ(result.uploaded.size(), 2U);
    EXPECT_THAT(pendingChanges(account), IsEmpty());
    EXPECT_THAT(mappedFiles(account), ElementsAre(testing::Key("new1"), testing::Key("new2")));
}

// Two files of one item, of which a cut map has one left: the other is no former edition of it.
TEST_F(Loss, CutBookMapKeepsBothFilesOfOneItem) {
    const BookDescription first = session->getAddedBooks().front();
    {
        const AccountLock lock(account);
        Downloads(*session, account).fetch(first);
    }
    const auto map = mappedFiles(account);
    ASSERT_EQ(map.size(), 3U);
    fs::resize_file(mapFile(), std::string("first.txt").size() + 1 + 4);
    const AccountLock lock(account);
    EXPECT_EQ(mappedFiles(account), map);
}

// A new entry costs the copy one record, which a kill may cut: the next one must not stand behind
// it.
TEST_F(Loss, CopyOfTheBookMapGrowsByRecordsAndHoldsAllEntries) {
    const std::string copy = account.file(own_files::book_map_copy);
    const auto& books = session->getAddedBooks();
    const auto lock = std::make_unique<AccountLock>(account);
    Downloads downloads(*session, account);
    const std::string before = readFile(copy);
    downloads.fetch(books.front());
    EXPECT_EQ(readFile(copy).rfind(before + "first_1.txt", 0), 0U);
    fs::resize_file(copy, fs::file_size(copy) - 2);
    downloads.fetch(books.front());
    EXPECT_EQ(readFile(copy), readFile(mapFile()));

    service.inject("DownloadContent:filename=other.txt");
    for (std::size_t time = 0; time <= 20; ++time) {  // the last one counts
        fs::remove(book("other.txt"));
        downloads.fetch(books[time % books.size()]);
        EXPECT_LE(fs::file_size(copy), 3 * fs::file_size(mapFile()));
    }
    const auto map = mappedFiles(account);
    EXPECT_EQ(map.size(), 5U);
    EXPECT_EQ(map.at("other.txt"), map.at("first.txt"));
    fs::resize_file(copy, fs::file_size(copy) + 3);
    fs::resize_file(mapFile(), 0);
    repairAndCopyBookMap(account);
    EXPECT_EQ(mappedFiles(account), map);
    EXPECT_EQ(readFile(copy), readFile(mapFile()));
}

// An upload has moved a book to another name: its former file must not come back as a second one.
TEST_F(Loss, MovedBookKeepsItsNewNameOnly) {
    writeFile(book("new"), "edition 2");
    journalChange("first.txt", "new");
    Tavro other;
    ASSERT_TRUE(other.init(account.folder()));
    other.syncDownloadFolder();
    const AccountLock lock(account);
    EXPECT_THAT(mappedFiles(account), ElementsAre(testing::Key("new"), testing::Key("second.txt")));
}

TEST_F(Loss, DownloadWithoutAMapEntryFailsAndTakesItsFileBack) {
    const AccountLock lock(account);
    const BookDescription first = session->getAddedBooks().front();
    {
        const auto back = blocked(mapFile());
        EXPECT_NE(failureOf([&] { Downloads(*session, account).fetch(first); }), "");
    }
    EXPECT_FALSE(fs::exists(book("first_1.txt")));
    EXPECT_EQ(mappedFiles(account).size(), 2U);
}

// The library takes a file of the announced name away when the transfer fails.
TEST_F(Loss, FailedDownloadLeavesPresentBooksAlone) {
    const AccountLock lock(account);
    service.inject("DownloadContent:cut=3,filename=first.txt");
    for (const auto& entry : session->getAddedBooks())
        EXPECT_THAT(failureOf([&] { Downloads(*session, account).fetch(entry); }),
                    HasSubstr("no whole file came"));
    EXPECT_EQ(readFile(book("first.txt")), "The first book.\n");
}

// A 32-bit machine cannot tell such a date, which must not pass for a missing or empty file.
TEST_F(Loss, FilesDatedAfter2038AreAsGoodAsOthers) {
    journalChange("first.txt", "renamed.txt");
    const std::string settings = account.file(account_files::configuration);
    fs::permissions(settings, fs::perms{0640});
    Words touch{"/usr/bin/touch", "-d", "2040-01-01", account.folder(), book("first.txt")};
    for (const auto& entry : fs::directory_iterator(account.folder()))
        touch.push_back(entry.path());
    ASSERT_EQ(statusOf(::start(touch)), 0);

    Tavro late;
    EXPECT_TRUE(late.init(account.folder()));
    EXPECT_EQ(service.count(Operation::RegisterDevice), 1U);
    EXPECT_TRUE(TavroClient().IsLoggedIn());
    EXPECT_EQ(late.downloadBook(session->getAddedBooks().front()), "first_1.txt");
    EXPECT_EQ(late.GetBooks().size(), 3U);
    SyncJournal changes(journal);
    changes.reload();
    EXPECT_EQ(changes.count(), 1U);
    account.store({{"Email", "late@reader.example"}});
    EXPECT_EQ(fs::status(settings).permissions(), fs::perms{0640});
}

TEST_F(Loss, MissingDownloadFolderIsMadeForAnAccountWithoutBooksOnly) {
    EXPECT_NO_THROW(AccountLock{account});  // which copies the map
    const MappedFiles books = mappedFiles(account);
    fs::rename(device.syncFolder(), device.syncFolder() + ".card");
    for (const std::uintmax_t size : {20U, 0U}) {
        fs::resize_file(mapFile(), size);
        EXPECT_NO_THROW(AccountLock{account});
        EXPECT_EQ(mappedFiles(account), books) << "cut to " << size << " bytes";
    }
    EXPECT_EQ(failureOf([&] { requireDownloadFolder(account); }),
              "the download folder " + device.syncFolder() + " is missing");
    EXPECT_FALSE(fs::exists(device.syncFolder()));
    fs::remove(mapFile());
    fs::remove(account.file(".tavro.lst_saved"));
    requireDownloadFolder(account);
    EXPECT_TRUE(fs::is_directory(device.syncFolder()));
}

// Stored in the other order, an interruption leaves a session beside a token that it is not for.
TEST_F(Loss, FailedRenewalLeavesNoSessionBesideAnotherToken) {
    const std::string token = account.file(account_files::token);
    fs::remove(token);
    fs::create_directory(token);
    EXPECT_THAT(failureOf([&] { account.storeToken("another"); }),
                HasSubstr("cannot write " + token));
    EXPECT_FALSE(Account(account.folder()).isLoggedIn());
    EXPECT_FALSE(fs::exists(account.file(account_files::login_marker)));
}

TEST_F(Loss, TwoWritersOfTheSettingsLoseNoValue) {
    const auto write = [&](const std::string& key) {
        for (int number = 1; number <= 50; ++number)
            storeSettings(account.file(account_files::configuration),
                          {{key + std::to_string(number), "value"}});
    };
    inProcesses(2, [&](int number) { write(number == 0 ? "even" : "odd"); });
    const std::string content = readFile(account.file(account_files::configuration));
    for (int number = 1; number <= 50; ++number)
        for (const char* key : {"even", "odd"})
            EXPECT_THAT(content, HasSubstr(key + std::to_string(number) + "=value\n"));
}

// Each change is replayed alone: what other programs journal meanwhile must not go with it.
TEST_F(Loss, ChangeJournalledDuringAReplaySurvivesIt) {
    const AccountLock lock(account);
    journalChange("first.txt", "first.txt");
    ReplayJournal replay(account);
    replay.isolate(replay.changes().front());
    journalChange("second.txt", "second.txt");
    replay.isolate(replay.changes().front());
    EXPECT_EQ(pendingChanges(account).size(), 1U);
    restoreJournal(account);  // as after a kill
    EXPECT_EQ(pendingChanges(account).size(), 2U);
}

// Some hold a token. The file of a writer that is still at work must stay.
TEST_F(Loss, FilesOfKilledWritersGoWithTheNextLock) {
    const std::string prefix(posix::replacement_prefix);
    writeFile(account.file(prefix + "killed"), "token");
    writeFile(book(prefix + "killed"), "half a book");
    posix::TemporaryFile live(book(prefix));
    const AccountLock lock(account);
    EXPECT_FALSE(fs::exists(account.file(prefix + "killed")));
    EXPECT_FALSE(fs::exists(book(prefix + "killed")));
    EXPECT_TRUE(fs::exists(live.path()));
}
