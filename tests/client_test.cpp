#include "tavro_client.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <lectern.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <regex>
#include <sstream>
#include <tuple>
#include <vector>

#include "core_utils_host.h"
#include "posix/file_descriptor.h"
#include "support/device_root.h"
#include "support/next_function.h"
#include "support/processes.h"
#include "support/shell_guard.h"
#include "tavro_entry_points.h"

using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

/// What the library asked of the system and the platform, in order.
std::vector<std::string> calls;

const std::string& root = deviceRoot();

template <typename... Values>
void note(const Values&... values) {
    std::ostringstream text;
    ((text << values << ' '), ...);
    calls.push_back(text.str().substr(0, text.str().size() - 1));
}

}  // namespace

// These stand before the system's and the platform's. What would reach beyond the device root is
// noted only.

extern "C" int system(const char* command) {
    note("system", command);
    return runBelowDeviceRoot(command);
}

extern "C" int unlink(const char* path) noexcept {
    note("unlink", path);
    return isBelowDeviceRoot(path) ? next<int(const char*)>("unlink")(path) : 0;
}

extern "C" int SendEventTo(int target, int type, int parameter1, int parameter2) {
    note("event", target, type, parameter1, parameter2);
    return 0;
}

extern "C" int OpenBook(const char* path, const char* parameters, int flags) {
    note("open", path, parameters, flags);
    return 42;
}

extern "C" LecternBitmap* LoadJPEG(const char* path, int width, int height, int brightness,
                                   int contrast, int proportional) {
    note("jpeg", path, width, height, brightness, contrast, proportional);
    return nullptr;
}

extern "C" LecternBitmap* LoadPNGStretch(const char* path, int width, int height, int proportional,
                                         int dither) {
    note("png", path, width, height, proportional, dither);
    return reinterpret_cast<LecternBitmap*>(&calls);
}

extern "C" LecternBitmap* LoadBitmap(const char* path) {
    note("bmp", path);
    return reinterpret_cast<LecternBitmap*>(&calls);
}

namespace {

using Calls = std::vector<std::string>;

class Client : public ::testing::Test {
protected:
    Client() {
        ::setenv("TAVRO_PARTNER", "0", 1);
        writeFile(device.file(account_files::token), "token");
        device.writeAccount();
        calls.clear();
    }

    /// Saves a catalogue with one book for each of `ids`.
    void saveCatalogue(const std::vector<std::string>& ids) {
        std::string xml = "<R><AddedItems>";
        for (const std::string& id : ids)
            xml += "<ItemsResponse><ItemID>" + id + "</ItemID><Title>T" + id + "</Title><Artist>A" +
                   id + "</Artist><CategoryId>C" + id + "</CategoryId><ISBN>I" + id +
                   "</ISBN><ISBN13>13</ISBN13></ItemsResponse>";
        writeFile(device.file(account_files::catalogue), xml + "</AddedItems></R>");
    }

    void saveDownloadList(const std::vector<std::string>& files) {
        std::ostringstream stream;
        folium::utilities::SerializeStringVec(stream, files);
        writeFile(list, stream.str());
    }

    /// Title that the browser is told for the file `name` of the sync folder; "-" when none.
    std::string titleOf(const std::string& name) {
        tavro_book_info info = {};
        if (tavro_get_book_info((device.syncFolder() + name).c_str(), &info) != 0)
            return info.title == nullptr ? "-" : "touched";
        std::string title = info.title;
        for (char* text : {info.title, info.author, info.category_id, info.isbn})
            std::free(text);
        return title;
    }

    const DeviceRoot device;
    const std::string list = device.file(account_files::download_list);
    TavroClient client;
};

}  // namespace

TEST_F(Client, LoginIsAMarkerThatIsNotEmpty) {
    const std::string marker = device.file(account_files::login_marker);
    EXPECT_EQ(client.GetProfile(), device.configuration());
    EXPECT_FALSE(client.IsLoggedIn());
    writeFile(marker, "");
    EXPECT_FALSE(client.IsLoggedIn());
    writeFile(marker, "x");
    EXPECT_TRUE(client.IsLoggedIn());
    EXPECT_EQ(client.GetSyncFolder(), device.syncFolder());
    fs::remove_all(device.configuration());
    EXPECT_FALSE(client.IsLoggedIn());
    EXPECT_EQ(client.GetSyncFolder(), "");
}

TEST_F(Client, StartsItsApplications) {
    const std::string application = root + "/ebrmain/bin/tavro_sync.app";
    ::setenv("TAVRO_LOG", (root + "/log").c_str(), 1);
    EXPECT_EQ(client.StartSync(), 0);
    EXPECT_EQ(statusOf(-1), 127);
    EXPECT_THAT(readFile(root + "/log"),
                testing::ContainsRegex("level 1 process [0-9]+ [^ ]+ int TavroClient::StartSync"
                                       "[(][)]: [[]pid:[0-9]+[]]TavroClient::StartSync: exec[(][)] "
                                       "failed, errno=2\n"));
    writeProgram(application, "echo $# $0 > " + root + "/started\nexit 7\n");
    EXPECT_EQ(client.StartSync(), 0);
    EXPECT_EQ(statusOf(-1), 7);
    EXPECT_EQ(readFile(root + "/started"), "0 " + application + "\n");
    EXPECT_EQ(client.StartLoginWizard(), 42);
    EXPECT_EQ(calls, Calls{"open " + root + "/ebrmain/bin/tavro_wizard.app -library 0"});
}

TEST_F(Client, CallsAreLoggedWithTheirSignatures) {
    ::setenv("TAVRO_LOG", (root + "/log").c_str(), 1);
    ::setenv("TAVRO_LOG_LEVEL", "4", 1);
    client.IsLoggedIn();
    client.GetSyncFolder();
    client.StartLoginWizard();
    client.StartSync();
    ::wait(nullptr);
    fs::remove_all(device.configuration());
    EXPECT_EQ(tavro_get_book_status("/sync/a.file"), 1);
    ::unsetenv("TAVRO_LOG_LEVEL");
    const std::string log =
        std::regex_replace(readFile(root + "/log"), std::regex("[^ ]+[.]cpp:[0-9]+ "), "");
    const std::string process = std::to_string(::getpid());
    const std::tuple<int, const char*, const char*> lines[] = {
        {4, "bool TavroClient::IsLoggedIn() const", "Tavro IsLoggedIn called"},
        {4, "std::string TavroClient::GetSyncFolder()", "Tavro GetSyncFolder called"},
        {4, "int TavroClient::StartLoginWizard()", "Tavro StartLoginWizard called"},
        {4, "int TavroClient::StartSync()", "Tavro StartSync called"},
        {1, "int tavro_get_book_status(const char *)", "Failed to open lock file with errno [2]"}};
    for (const auto& [level, signature, text] : lines)
        EXPECT_THAT(
            log, testing::HasSubstr("level " + std::to_string(level) + " process " + process + " " +
                                    signature + ": [pid:" + process + "]" + text + "\n"));
}

// Log-out deletes: what it takes, what it spares, and when, must not change by accident.
TEST_F(Client, LogOutRemovesEverythingInOrder) {
    const std::string folder = device.syncFolder();
    for (const char* name : {"/a book.epub", "/b.txt", "/.hidden", "/sub/c.txt"})
        writeFile(folder + name, "x");
    writeFile(folder + "joined.txt", "in the folder above, next to the sync folder");
    writeFile(root + "/mnt/ext1/.adobe-hidden-files/x", "x");
    addToMap(device.configuration(), {{"b.txt", 2}, {"joined.txt", 1}});
    calls.clear();
    client.LogOut();
    const Calls expected = {"unlink " + folder + "b.txt",
                            "unlink " + folder + "joined.txt",
                            "system rm -rf " + device.configuration(),
                            "system rm -rf " + root + "/mnt/ext1/.adobe-hidden-files",
                            "system rm " + folder + "/*",
                            "event -3 215 0 0",
                            "system killall browser.app"};
    EXPECT_EQ(calls, expected);
    for (const char* gone : {"/a book.epub", "/b.txt", "joined.txt"})
        EXPECT_FALSE(fs::exists(folder + gone)) << gone;
    for (const char* spared : {"/.hidden", "/sub/c.txt"})
        EXPECT_TRUE(fs::exists(folder + spared)) << spared;
    EXPECT_FALSE(fs::exists(device.configuration()));
    EXPECT_FALSE(fs::exists(root + "/mnt/ext1/.adobe-hidden-files"));

    // Without a sync folder, "rm /*" would take the files of the whole device.
    calls.clear();
    client.LogOut();
    EXPECT_EQ(calls, (Calls{expected[2], expected[3], expected[5], expected[6]}));
}

TEST_F(Client, InfoComesFromPlaceholderOrBookMap) {
    const std::string folder = device.syncFolder();
    saveCatalogue({"5", "678", "-7", "5"});
    addToMap(device.configuration(), {{"book.epub", -7}, {"Book.FILE", 5}, {"gone.txt", 99}});
    writeFile(folder + "/abc.file", "  678\nmore text");
    writeFile(folder + "/empty.file", " \n");
    inProcesses(1, [this](int) {
        const std::pair<const char*, const char*> cases[] = {{"/abc.file", "T678"},
                                                             {"/book.epub", "T-7"},
                                                             {"/sub/book.epub", "T-7"},
                                                             {"/Book.FILE", "T5"},
                                                             {"/empty.file", "-"},
                                                             {"/missing.file", "-"},
                                                             {"/gone.txt", "-"},
                                                             {"/unknown.txt", "-"},
                                                             {"/", "-"},
                                                             {"", "-"},
                                                             {"-2/book.epub", "T-7"}};
        for (const auto& [name, title] : cases)
            EXPECT_EQ(titleOf(name), title) << name;
        tavro_book_info info = {};
        std::memset(&info, 0x5A, sizeof info);
        const tavro_book_info before = info;
        EXPECT_EQ(tavro_get_book_info("/elsewhere/book.epub", &info), -1);
        EXPECT_EQ(tavro_get_book_info(nullptr, &info), -1);
        EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0);
        ASSERT_EQ(tavro_get_book_info((device.syncFolder() + "/abc.file").c_str(), &info), 0);
        EXPECT_EQ(info.author + ""s + info.category_id + info.isbn, "A678C678I678");
        for (char* const text : {info.title, info.author, info.category_id, info.isbn})
            std::free(text);
        info.title = before.title;
        info.author = before.author;
        info.category_id = before.category_id;
        info.isbn = before.isbn;
        EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0);
    });
}

TEST_F(Client, InfoKeepsItsSessionAndNoticesANewCatalogue) {
    writeFile(device.syncFolder() + "/a.file", "1");
    inProcesses(1, [this](int) {
        EXPECT_EQ(titleOf("/a.file"), "-");
        saveCatalogue({"1"});
        EXPECT_EQ(titleOf("/a.file"), "T1");
        // With no sync folder configured any more, every path is looked at.
        writeFile(device.file(account_files::configuration), "");
        EXPECT_EQ(titleOf("/a.file"), "T1");
    });
    // A first call that cannot initialise the session is never made good.
    fs::remove(device.file(account_files::configuration));
    inProcesses(1, [this](int) {
        EXPECT_EQ(titleOf("/a.file"), "-");
        device.writeAccount();
        EXPECT_EQ(titleOf("/a.file"), "-");
    });
}

TEST_F(Client, StatusTellsPendingPlaceholders) {
    const std::string pending = device.syncFolder() + "/p.file";
    EXPECT_EQ(tavro_get_book_status("/sync/x.epub"), 0);
    EXPECT_EQ(tavro_get_book_status(nullptr), 0);
    EXPECT_FALSE(fs::exists(list));
    EXPECT_EQ(tavro_get_book_status("/sync/a.files/x.epub"), 1);
    EXPECT_TRUE(fs::exists(list));
    saveDownloadList({"/other.file", pending});
    inProcesses(1, [&](int) {
        const int other = ::open(list.c_str(), O_RDWR);
        EXPECT_EQ(tavro_get_book_status((pending + "x").c_str()), 1);
        EXPECT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
        ::flock(other, LOCK_UN);
        EXPECT_EQ(tavro_get_book_status(pending.c_str()), 2);
        EXPECT_EQ(::flock(other, LOCK_EX | LOCK_NB), -1);  // held until the process ends
        EXPECT_EQ(tavro_get_book_status(pending.c_str()), 2);
        EXPECT_EQ(::dup(0), other + 3);  // two descriptors stay open
    });
    writeFile(list, "");
    EXPECT_EQ(tavro_get_book_status(pending.c_str()), 1);
    const posix::FileDescriptor empty(::open(list.c_str(), O_RDWR));
    EXPECT_EQ(::flock(empty.get(), LOCK_EX | LOCK_NB), 0);
    ::flock(empty.get(), LOCK_UN);
    writeFile(list, "\x02\0\0\0\xFF\xFF\xFF\xFF"s);  // a damaged list
    EXPECT_EQ(tavro_get_book_status(pending.c_str()), 1);
    fs::remove_all(device.configuration());
    EXPECT_EQ(tavro_get_book_status(pending.c_str()), 1);
}

TEST_F(Client, CoverIsTheFirstFileThatExists) {
    const std::string book = device.syncFolder() + "/b.file";
    const std::string cover = device.file("covers/42");
    saveCatalogue({"1", "42"});
    writeFile(book, "42");
    EXPECT_EQ(tavro_get_book_cover("/elsewhere/b.file", 3, 4), nullptr);
    EXPECT_EQ(tavro_get_book_cover(book.c_str(), 3, 4), nullptr);
    EXPECT_TRUE(calls.empty());
    writeFile(cover + ".bmp", "");
    EXPECT_EQ(tavro_get_book_cover(book.c_str(), 3, 4), &calls);
    writeFile(cover + ".png", "");
    EXPECT_EQ(tavro_get_book_cover(book.c_str(), 3, 4), &calls);
    writeFile(cover + ".jpeg", "");
    EXPECT_EQ(tavro_get_book_cover(book.c_str(), 3, 4), nullptr);
    EXPECT_EQ(calls, (Calls{"bmp " + cover + ".bmp", "png " + cover + ".png 3 4 1 1",
                            "jpeg " + cover + ".jpeg 3 4 96 105 1"}));
    // A file that nothing is known of gets the cover of the first book without an item id.
    saveCatalogue({"1", ""});
    writeFile(device.file("covers/.bmp"), "");
    EXPECT_EQ(tavro_get_book_cover((device.syncFolder() + "/unknown").c_str(), 3, 4), &calls);
}
