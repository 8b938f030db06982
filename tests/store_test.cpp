#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "bookmap.h"
#include "posix/file_descriptor.h"
#include "support/processes.h"
#include "support/temporary_folder.h"
#include "syncjournal.h"

using namespace std::string_literals;
using testing::HasSubstr;

namespace {

using Ids = std::map<std::string, int>;

class Store : public ::testing::Test {
protected:
    Store() {
        ::umask(0);
        map.path = path;
    }

    mode_t mode() const {
        struct stat status = {};
        ::stat(path.c_str(), &status);
        return status.st_mode & 07777;
    }

    TemporaryFolder folder;
    const std::string path = folder / "store";
    BookMap map;
    SyncJournal journal{path};
};

}  // namespace

TEST_F(Store, MapWritesRecordsInOrderOfPath) {
    map.Add("b", -1);
    map.Add("a", 7);
    map.Add("a", 5);
    EXPECT_EQ(readFile(path), "a\0\5\0\0\0b\0\xFF\xFF\xFF\xFF"s);
    EXPECT_EQ(mode(), 0777U);
    EXPECT_EQ(map.fd_, -1);
    map.Add("", 0x01020304);
    EXPECT_EQ(readFile(path), "\0\4\3\2\1a\0\5\0\0\0b\0\xFF\xFF\xFF\xFF"s);
    for (const char* name : {"", "a", "absent", "b"})
        map.Remove(name);
    EXPECT_EQ(readFile(path), "");
    map.Add("key", 1);
    map.Add(map.bookMap.begin()->first, 2);  // a name that the reload takes away
    map.Remove(map.bookMap.begin()->first);
    EXPECT_EQ(readFile(path), "");
    map.Add("z", 4);
    map.Add("a", 4);
    EXPECT_EQ(map.GetIdMap(), (std::map<int, std::string>{{4, "z"}}));  // the last in the file
}

// A reload changes the maps in place: what others added, changed or took away must not linger.
TEST_F(Store, ReloadLeavesNothingOfTheFormerContent) {
    const struct {
        std::string file;
        Ids byPath;
        std::map<int, std::string> byId;
    } contents[] = {
        {"b\0\2\0\0\0c\0\3\0\0\0"s, {{"b", 2}, {"c", 3}}, {{2, "b"}, {3, "c"}}},
        {"a\0\2\0\0\0b\0\2\0\0\0d\0\1\0\0\0"s,
         {{"a", 2}, {"b", 2}, {"d", 1}},
         {{1, "d"}, {2, "b"}}},
        {"c\0\3\0\0\0a\0\4\0\0\0c\0\5\0\0\0"s,  // neither sorted nor unique
         {{"a", 4}, {"c", 5}},
         {{3, "c"}, {4, "a"}, {5, "c"}}},
    };
    for (const auto& content : contents) {
        writeFile(path, content.file);
        EXPECT_EQ(map.GetBookMap(), content.byPath);
        EXPECT_EQ(map.GetIdMap(), content.byId);
    }
    std::string many;  // so many that a sort could mix those of one name
    for (char number = 0; number < 40; ++number)
        many += (number % 2 == 0 ? "b\0"s : "a\0"s) + number + "\0\0\0"s;
    writeFile(path, many);
    EXPECT_EQ(map.GetBookMap(), (Ids{{"a", 39}, {"b", 38}}));
}

TEST_F(Store, UnloadableMapKeepsWhatIsInMemory) {
    map.Add("a", 1);
    writeFile(path, "");
    EXPECT_EQ(map.GetBookMap(), (Ids{{"a", 1}}));
    EXPECT_EQ(map.loadMapInt(), -1);
    EXPECT_EQ(map.saveMapInt(), -1);
    map.Add("b", 2);
    ASSERT_EQ(map.LockFile(), 0);
    EXPECT_EQ(map.saveMapInt() + map.saveMapInt(), 0);  // each from the start of the file
    EXPECT_EQ(readFile(path), "a\0\1\0\0\0b\0\2\0\0\0"s);
}

TEST_F(Store, MapThatCannotBeOpenedIsLoggedAndChangesInMemoryOnly) {
    const std::string log = folder / "log";
    ::setenv("TAVRO_LOG", log.c_str(), 1);
    map.path = folder / "missing/list";
    EXPECT_EQ(map.LockFile(), -1);
    map.Add("a", 1);
    ::unsetenv("TAVRO_LOG");
    EXPECT_EQ(map.bookMap, (Ids{{"a", 1}}));
    EXPECT_THAT(readFile(log),
                HasSubstr("int BookMap::LockFile(): [pid:" + std::to_string(::getpid()) +
                          "]Condition: \"-1 != fd_\", return(\"FL_FAILED\")]Open failed "
                          "with 2\n"));
}

TEST_F(Store, MapIsLockedDuringAnOperationOnly) {
    const posix::FileDescriptor other(::open(path.c_str(), O_RDWR | O_CREAT, 0600));
    ASSERT_EQ(map.LockFile(), 0);
    EXPECT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), -1);
    ASSERT_EQ(map.LockFile(), 0);  // closes the first descriptor instead of waiting for itself
    const std::function<void()> ends[] = {[this] { map.UnlockFile(); }, [this] { map.Add("a", 1); },
                                          [this] { map.Remove("b"); }, [this] { map.GetBookMap(); },
                                          [this] { map.GetIdMap(); }};
    for (const auto& end : ends) {
        end();
        EXPECT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), 0);
        ::flock(other.get(), LOCK_UN);
    }
}

// A full disk or a dead battery may cut a file anywhere; corruption may follow.
TEST_F(Store, TruncatedTailKeepsCompleteRecords) {
    const std::string two = "one\0\1\0\0\0two\0\2\0\0\0"s;
    for (std::size_t size = 1; size <= two.size(); ++size) {
        writeFile(path, two.substr(0, size));
        BookMap fresh;
        fresh.path = path;
        EXPECT_EQ(fresh.GetBookMap().size(), size / 8) << size;
    }
    const std::string pair = "a\0b\0\1\0\0\0cc\0d\0\0\0\0\0"s;
    for (std::size_t size = 1; size <= pair.size(); ++size) {
        writeFile(path, pair.substr(0, size));
        EXPECT_EQ(journal.reload(), 0);
        EXPECT_EQ(journal.count(), size < 8 ? 0U : size < pair.size() ? 1U : 2U) << size;
    }
    // A page of text without a zero byte, to the very end of the mapping.
    writeFile(path, std::string(4096, 'x'));
    EXPECT_EQ(journal.reload(), 0);
    EXPECT_EQ(journal.count(), 0U);
    EXPECT_TRUE(map.GetBookMap().empty());
}

TEST_F(Store, MapSurvivesChangesFromManyProcesses) {
    inProcesses(4, [this](int number) {
        for (int change = 0; change < 25; ++change)
            map.Add("book " + std::to_string(number) + " " + std::to_string(change), change);
    });
    EXPECT_EQ(map.GetBookMap().size(), 100U);
}

TEST_F(Store, JournalWritesExactBytes) {
    ::umask(022);
    EXPECT_EQ(journal.push({"a", "b", true}), 0);
    EXPECT_EQ(mode(), 0600U);
    EXPECT_EQ(readFile(path), "a\0b\0\1\0\0\0"s);
    EXPECT_EQ(journal.push({"", "", false}), 0);
    EXPECT_EQ(readFile(path), "a\0b\0\1\0\0\0\0\0\0\0\0\0"s);
    EXPECT_EQ(journal.count(), 0U);
    EXPECT_EQ(journal.clearFile(), 0);
    EXPECT_EQ(readFile(path), "");
}

TEST_F(Store, JournalGivesTheNewestRecordFirst) {
    SyncJournal::Record out{"untouched", "", true};
    EXPECT_FALSE(journal.pop(out));
    EXPECT_EQ(out.oldName, "untouched");
    EXPECT_EQ(journal.reload(), -1);
    writeFile(path, "a\0b\0\1\0\0\0c\0d\0\2\0\0\0e\0f\0\1\0\0\1"s);
    EXPECT_EQ(journal.reload(), 0);
    EXPECT_EQ(journal.clearFile(), 0);
    EXPECT_EQ(journal.reload(), 0);  // an empty file leaves the records in memory
    EXPECT_EQ(journal.count(), 3U);
    const struct {
        const char* name;
        bool flag;
    } expected[] = {{"e", false}, {"c", false}, {"a", true}};
    for (const auto& record : expected) {
        ASSERT_TRUE(journal.pop(out));
        EXPECT_EQ(out.oldName, record.name);
        EXPECT_EQ(out.flag, record.flag) << record.name;
    }
}

// Records of two writers must not lie in each other, not even when a signal comes meanwhile.
TEST_F(Store, WriterWaitsForTheLockOfAnother) {
    struct sigaction handled = {};
    handled.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGUSR1, &handled, nullptr), 0);
    const struct {
        std::function<int(int)> lock, unlock;
        std::function<void()> write;
        std::uintmax_t written;
    } stores[] = {
        {[](int file) { return ::lockf(file, F_LOCK, 0); },
         [](int file) { return ::lockf(file, F_ULOCK, 0); },
         [this] {
             journal.push({"a", "b", true});
         },
         8},
        {[](int file) { return ::flock(file, LOCK_EX); },
         [](int file) { return ::flock(file, LOCK_UN); }, [this] { map.Add("a", 1); }, 6}};
    for (const auto& store : stores) {
        const posix::FileDescriptor other(::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600));
        ASSERT_EQ(store.lock(other.get()), 0);
        const pid_t writer = ::fork();
        if (writer == 0) {
            store.write();
            ::_exit(0);
        }
        ::usleep(200000);
        ::kill(writer, SIGUSR1);
        ::usleep(100000);
        EXPECT_EQ(std::filesystem::file_size(path), 0U);
        EXPECT_EQ(store.unlock(other.get()), 0);
        EXPECT_EQ(statusOf(writer), 0);
        EXPECT_EQ(std::filesystem::file_size(path), store.written);
    }
    ::signal(SIGUSR1, SIG_DFL);
}

TEST_F(Store, UnopenableJournalSaysSo) {
    SyncJournal lost(folder / "missing/journal");
    EXPECT_EQ(lost.push({"a", "b", false}), -1);
    EXPECT_EQ(lost.clearFile(), -1);
    EXPECT_EQ(lost.reload(), -1);
}
