// Synchronisation rounds, by the real application and in this process, against a running service.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <thread>

#include "account/book_map.h"
#include "account/round_record.h"
#include "core_utils.h"
#include "support/logged_in_device.h"
#include "support/processes.h"
#include "support/shell_guard.h"
#include "tavro-sync/activity_log.h"
#include "tavro-sync/sync_round.h"
#include "tavro_client.h"
#include "tavro_entry_points.h"

using namespace std::chrono_literals;
using tavro::service::Operation;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

const std::string& root = deviceRoot();

/// A device with its applications whose account is logged in, and nothing synchronised yet.
class Sync : public LoggedInDevice {
protected:
    Sync() {
        writeFile(folder / "books/third.txt", "The third book.\n");
        fs::copy_file(TAVRO_TEST_SAMPLES "/salt-and-pepper.epub", folder / "books/pepper.epub");
        fs::create_directories(root + "/ebrmain/bin");
        fs::create_symlink(TAVRO_TEST_SYNC_APPLICATION, application);
    }

    /// Names of the files in the download folder.
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(device.syncFolder()))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    std::vector<std::string> downloadList() const {
        std::ifstream stream(account.file(account_files::download_list));
        std::vector<std::string> list;
        folium::utilities::SerializationUtils::DeserializeStringVec(stream, list);
        return list;
    }

    /// The item that the service has for the book called `title`.
    int item(const std::string& title) const {
        for (const auto& book : service.books())
            if (book.title == title)
                return static_cast<int>(book.id);
        return 0;
    }

    pid_t start() const { return ::start({application}); }

    /// Whether a round in this process did all that it should.
    bool round() const { return tavro::tools::SyncRound(account, log).run(); }

    std::string outcome() const { return tavro::tools::lastRound(account).outcome; }

    /// Waits until `isTrue`, for some seconds.
    static bool soon(const std::function<bool()>& isTrue) {
        for (int attempt = 0; attempt < 500 && !isTrue(); ++attempt)
            std::this_thread::sleep_for(10ms);
        return isTrue();
    }

    const std::string application = root + "/ebrmain/bin/tavro_sync.app";
    const tavro::tools::ActivityLog log{account.file(".tavro_sync.log")};
    const std::vector<std::string> books{"first.txt", "pepper.epub", "second.txt", "third.txt"};
};

}  // namespace

// These stand before the system's. The pauses between attempts to upload cost no time.
extern "C" int usleep(useconds_t) {
    return 0;
}

extern "C" int system(const char* command) {
    return runBelowDeviceRoot(command);
}

// A browser that has seen a pending book keeps its lock on the list, and must not stop the round.
TEST_F(Sync, BackgroundRoundTurnsPendingBooksIntoPresentOnes) {
    service.inject("DownloadContent:delay=200");
    ASSERT_EQ(TavroClient().StartSync(), 0);
    ASSERT_TRUE(soon([&] { return downloadList().size() == books.size() && files().size() >= 4; }));
    const std::string pending = downloadList().back();
    EXPECT_EQ(tavro_get_book_status(pending.c_str()), 2);
    EXPECT_EQ(outcome(), "running");
    tavro_book_info info = {};
    EXPECT_EQ(tavro_get_book_info(pending.c_str(), &info), 0);
    for (char* text : {info.title, info.author, info.category_id, info.isbn})
        std::free(text);

    int status = -1;
    ASSERT_GT(::wait(&status), 0);
    EXPECT_EQ(WEXITSTATUS(status), 0) << readFile(account.file(".tavro_sync.log"));
    EXPECT_EQ(files(), books);
    EXPECT_THAT(downloadList(), ElementsAre());
    EXPECT_EQ(tavro_get_book_status(pending.c_str()), 1);
    const std::string cover =
        account.file("covers/" + std::to_string(item("Salt & Pepper")) + ".png");
    EXPECT_EQ(readFile(cover).substr(1, 3), "PNG");
    EXPECT_THAT(readFile(account.file(".tavro_sync.log")), HasSubstr("4 downloaded, 0 missing"));
}

// The service lists deleted books for ever; what the user changed must outlive that.
TEST_F(Sync, DeletedBooksGoUnlessTheirChangeWaits) {
    ASSERT_TRUE(round());
    const int pepper = item("Salt & Pepper");
    for (const char* name : {"first.txt", "second.txt", "pepper.epub"})
        fs::remove((folder / "books/") + name);
    addToMap(device.configuration(), {{"../joined.txt", item("second")}});
    writeFile(device.syncFolder() + "/../joined.txt", "not in the folder");
    journalChange("first.txt", "first.txt");

    service.inject("UploadContent:code=2010");
    EXPECT_FALSE(round());
    EXPECT_THAT(files(), ElementsAre("first.txt", "third.txt"));
    EXPECT_EQ(readFile(device.syncFolder() + "/../joined.txt"), "not in the folder");
    EXPECT_EQ(tavro::tools::mappedFiles(account).count("pepper.epub"), 0U);
    EXPECT_EQ(tavro::tools::mappedFiles(account).count("first.txt"), 1U);
    EXPECT_EQ(tavro::tools::pendingChanges(account).size(), 1U);
    EXPECT_FALSE(fs::exists(account.file("covers/" + std::to_string(pepper) + ".png")));
    EXPECT_THAT(readFile(account.file(".tavro_sync.log")), HasSubstr("kept first.txt"));
}

TEST_F(Sync, RefusedOrMissingCatalogueChangesNothing) {
    ASSERT_TRUE(round());
    for (const std::string& name : books)
        fs::remove(device.syncFolder() + "/" + name);
    const std::string settings = readFile(device_paths::serverSettings());
    writeFile(device_paths::serverSettings(), settings + "downloadPort=1\n");
    EXPECT_EQ(statusOf(start()), 1);
    EXPECT_THAT(tavro::tools::lastRound(account).problems,
                ElementsAre(HasSubstr("did not get"), HasSubstr("no answer from 127.0.0.1:1")));
    writeFile(device_paths::serverSettings(), settings);
    ASSERT_TRUE(round());
    const std::string catalogue = readFile(account.file(account_files::catalogue));
    service.inject("SysnWithCloud:code=2009,times=1");
    EXPECT_EQ(statusOf(start()), 1);
    EXPECT_EQ(outcome(), "failed");
    EXPECT_THAT(tavro::tools::lastRound(account).problems, ElementsAre(HasSubstr("2009")));
    service.stop();
    EXPECT_EQ(statusOf(start()), 1);
    EXPECT_EQ(readFile(account.file(account_files::catalogue)), catalogue);
    EXPECT_EQ(files(), books);
}

// The library rewrites the book map in place and journals without a look at the outcome.
TEST_F(Sync, CutBookMapAndFullDiskLoseNothing) {
    ASSERT_TRUE(round());
    const auto map = tavro::tools::mappedFiles(account);
    fs::resize_file(account.file(account_files::book_map), 0);
    ASSERT_TRUE(round());
    EXPECT_EQ(tavro::tools::mappedFiles(account), map);
    EXPECT_EQ(files(), books);

    const SyncJournal::Record change{"first.txt", "first.txt", false};
    for (const std::string& file : {journal, account.file(".tavro_journal_replaying")}) {
        SyncJournal(file).push(change);
        const pid_t process = ::fork();
        if (process == 0) {
            const rlimit nothing{0, 0};
            ::signal(SIGXFSZ, SIG_IGN);
            ::setrlimit(RLIMIT_FSIZE, &nothing);
            ::execl(application.c_str(), application.c_str(), nullptr);
        }
        EXPECT_EQ(statusOf(process), 1);
        EXPECT_GT(fs::file_size(file), 0U);
        ASSERT_TRUE(round());
        EXPECT_TRUE(tavro::tools::pendingChanges(account).empty());
        EXPECT_EQ(service.requests().back().operation, Operation::SysnWithCloud);
    }
    EXPECT_EQ(service.count(Operation::UploadContent), 2U);
}

// A flat battery, the system's memory killer, a log-out: the application may go at any moment.
TEST_F(Sync, KilledRoundsLoseNothingAndDownloadNothingTwice) {
    ASSERT_TRUE(round());
    fs::remove(device.syncFolder() + "/second.txt");
    writeFile(device.syncFolder() + "/first-2.txt", "The first book, corrected.\n");
    journalChange("first.txt", "first-2.txt");
    for (const std::string operation : {"UploadContent", "SysnWithCloud", "DownloadContent"})
        service.inject(operation + ":delay=40");
    for (auto life = 10ms; life < 200ms; life += 20ms) {
        const pid_t process = start();
        std::this_thread::sleep_for(life);
        ::kill(process, SIGKILL);
        statusOf(process);
        EXPECT_NE(outcome(), "running");
    }
    service.clearFaults();
    service.inject("SysnWithCloud:delay=60000");
    const pid_t process = start();
    EXPECT_TRUE(soon([&] { return outcome() == "running"; }));
    ::kill(process, SIGKILL);
    statusOf(process);
    EXPECT_EQ(outcome(), "interrupted");
    service.clearFaults();
    ASSERT_TRUE(round());
    EXPECT_EQ(outcome(), "done");
    EXPECT_THAT(files(),
                ElementsAre("first-2.txt", "first.txt", "pepper.epub", "second.txt", "third.txt"));
    EXPECT_EQ(tavro::tools::mappedFiles(account).size(), books.size());
    EXPECT_EQ(tavro::tools::mappedFiles(account).count("first-2.txt"), 1U);
    EXPECT_THAT(tavro::tools::pendingChanges(account), ElementsAre());
    EXPECT_FALSE(fs::exists(account.file(".tavro_journal_replaying")));
    EXPECT_THAT(downloadList(), ElementsAre());
}

TEST_F(Sync, SecondRoundAtTheSameTimeLeavesTheWorkToTheFirst) {
    service.inject("SysnWithCloud:delay=300");
    const pid_t both[] = {start(), start()};
    for (const pid_t process : both)
        EXPECT_EQ(statusOf(process), 0);
    EXPECT_EQ(service.count(Operation::DownloadContent), books.size());
    EXPECT_EQ(files(), books);
}

TEST_F(Sync, LogOutDuringARoundLeavesNothingBehind) {
    service.inject("DownloadContent:delay=300");
    const pid_t process = start();
    ASSERT_TRUE(soon([&] { return files().size() >= 4; }));
    TavroClient().LogOut();
    EXPECT_EQ(statusOf(process), 1);
    EXPECT_THAT(files(), ElementsAre());
    EXPECT_FALSE(fs::exists(device.configuration()));
}

TEST_F(Sync, RoundOfAFormerSessionTouchesNothingOfTheNextOne) {
    ASSERT_TRUE(round());
    for (const char* name : {"/first.txt", "/second.txt"})
        fs::remove(device.syncFolder() + name);
    const auto downloads = service.count(Operation::DownloadContent);
    service.inject("DownloadContent:delay=60000");
    const pid_t process = start();
    ASSERT_TRUE(soon([&] { return files().size() >= 4; }));
    std::this_thread::sleep_for(200ms);  // in which it asks for one of them, and waits
    TavroClient().LogOut();
    fs::create_directories(device.configuration());
    device.writeAccount("sessionID=another\n");
    service.clearFaults();  // which ends the delay
    EXPECT_EQ(statusOf(process), 1);
    EXPECT_THAT(files(), ElementsAre());
    EXPECT_TRUE(fs::exists(account.file(account_files::configuration)));
    EXPECT_EQ(outcome(), "") << "another account's";
    EXPECT_LE(service.count(Operation::DownloadContent), downloads + 1) << "for nobody";
    EXPECT_LE(tavro::tools::mappedFiles(account).size(), 1U) << "what the library adds";
    EXPECT_FALSE(fs::exists(account.file(".tavro.lst_saved")));
}

// Cover addresses come from the service, and item ids become file names.
TEST_F(Sync, HostileCatalogueReachesNoFileOfTheDevice) {
    writeFile(root + "/secret.png", "\x89PNG secret");
    ASSERT_TRUE(round());
    const std::string deleted = std::to_string(item("first")) + "abc";
    const auto xmlOf = [](const std::string& id, const std::string& cover) {
        return "<ItemsResponse><ItemID>" + id + "</ItemID><CoverArtImage>" + cover +
               "</CoverArtImage></ItemsResponse>";
    };
    service.answer(
        Operation::SysnWithCloud,
        answerXml("1003", "<AddedItems>" + xmlOf("../7", "") +
                              xmlOf("8", "file://" + root + "/secret.png") +
                              xmlOf("9", service.url() + "/terms") + "</AddedItems><DeletedItems>" +
                              xmlOf(deleted, "") + "</DeletedItems>"));
    EXPECT_FALSE(round());
    for (const char* cover : {"8.png", "8.jpeg", "9.png", "9.jpeg"})
        EXPECT_FALSE(fs::exists(account.file("covers/") + cover));
    EXPECT_THAT(files(), ElementsAre("8.file", "9.file", "first.txt", "pepper.epub", "second.txt",
                                     "third.txt"));
    EXPECT_THAT(readFile(account.file(".tavro_sync.log")), HasSubstr("no JPEG, PNG or BMP"));
}

TEST_F(Sync, ForeignFilesStayAndStopNothing) {
    fs::create_directories(device.syncFolder() + "/4.file");
    writeFile(account.file("covers"), "no folder");
    writeFile(device.syncFolder() + "/5.file", "my own words");
    writeFile(device.syncFolder() + "/6.file", "6\n");  // of a book that is no longer missing
    writeFile(device.syncFolder() + "/notes.file", "");
    writeFile(device.syncFolder() + "/" + std::string(250, '8') + ".file", "");
    fs::create_symlink("9.file", device.syncFolder() + "/9.file");
    ASSERT_TRUE(round());
    EXPECT_EQ(readFile(device.syncFolder() + "/5.file"), "my own words");
    EXPECT_TRUE(fs::exists(device.syncFolder() + "/notes.file"));
    EXPECT_FALSE(fs::exists(device.syncFolder() + "/6.file"));
    EXPECT_TRUE(fs::exists(device.syncFolder() + "/4.file"));
    for (const std::string& name : books)
        EXPECT_TRUE(fs::exists(device.syncFolder() + "/" + name)) << name;

    // A folder in the place of a book that the service deletes.
    fs::remove(device.syncFolder() + "/first.txt");
    fs::create_directories(device.syncFolder() + "/first.txt/mine");
    fs::remove((folder / "books/") + "first.txt");
    EXPECT_FALSE(round());
    EXPECT_TRUE(fs::exists(device.syncFolder() + "/first.txt/mine"));
}
