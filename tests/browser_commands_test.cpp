// What the command-line tool does as the device's other programs do: books as the library browser
// sees them, the applications that the library starts, log-out.
#include <core_utils_host.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <png.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "posix/file_descriptor.h"
#include "support/tavroctl_fixture.h"
#include "support/terminal.h"

using nlohmann::json;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

/// Makes a grey PNG, white in its upper left quarter and black elsewhere, the file `path`.
void writeCover(const std::string& path) {
    const unsigned char pixels[] = {255, 0, 0, 0};
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = image.height = 2;
    image.format = PNG_FORMAT_GRAY;
    fs::create_directories(fs::path(path).parent_path());
    ASSERT_NE(0, png_image_write_to_file(&image, path.c_str(), 0, pixels, 0, nullptr));
}

class BrowserCommands : public Tavroctl {
protected:
    std::string coverOf(const std::string& file, const std::string& extension) const {
        for (const auto& entry : done({"map"}))
            if (entry["file"] == file)
                return root.configuration() + "/covers/" + entry["item"].get<std::string>() +
                       extension;
        return {};
    }

    std::string filePath(const std::string& name) const { return root.syncFolder() + "/" + name; }
};

}  // namespace

TEST_F(BrowserCommands, InfoAndStatusTakeNamesAndPaths) {
    downloadBooks();
    const std::string item = done({"map"})[0]["item"];
    writeFile(filePath("7.file"), item + "\n");
    writeFile(filePath("8.file"), "999\n");
    std::ofstream list(root.file(account_files::download_list));
    folium::utilities::SerializeStringVec(list, {filePath("7.file")});
    list.close();

    for (const std::string& file : {std::string("first.txt"), filePath("../Tavro/first.txt")})
        EXPECT_EQ("first", done({"info", file})["title"]) << file;
    EXPECT_EQ("first", done({"info", "7.file"})["title"]) << "the placeholder names the item";
    const json status = done({"status", "first.txt"});
    EXPECT_EQ(filePath("first.txt"), status["file"]);
    EXPECT_EQ("present", status["status"]);
    EXPECT_EQ("pending", done({"status", "7.file"})["status"]);
    EXPECT_EQ("not pending", done({"status", "8.file"})["status"]);

    writeFile(filePath("notes.txt"), "My own.\n");
    const std::vector<std::pair<Words, std::string>> failures{
        {{"info", folder / "first.txt"}, "lies outside the download folder"},
        {{"info", "notes.txt"}, "the book map does not know notes.txt"},
        {{"info", "8.file"}, "the catalogue has no item"},
        {{"status", "third.txt"}, "there is no file"},
        {{"cover", "notes.txt", "--ascii"}, "the book map does not know notes.txt"}};
    for (const auto& [words, error] : failures) {
        const json failure = failed(words);
        EXPECT_THAT(failure["error"], HasSubstr(error));
        EXPECT_NE("", failure["advice"]) << error;
    }
}

// A picture upside down, transposed or inverted would still be a picture.
TEST_F(BrowserCommands, CoverIsWrittenUprightAtTheSizeAskedFor) {
    downloadBooks();
    const std::string output = folder / "cover.png";
    const Words words{"cover", "first.txt", "--size", "40x60", "--ascii", "--output", output};
    EXPECT_THAT(failed(words)["error"], HasSubstr("there is no readable cover"));
    writeCover(coverOf("first.txt", ".png"));
    const json report = done(words);
    EXPECT_EQ(40, report["width"]);
    EXPECT_EQ(60, report["height"]);

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(0, png_image_begin_read_from_file(&image, output.c_str()));
    EXPECT_EQ(PNG_FORMAT_GRAY, image.format);
    ASSERT_EQ(40U, image.width);
    ASSERT_EQ(60U, image.height);
    std::vector<unsigned char> pixels(std::size_t(40) * 60);
    ASSERT_NE(0, png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
    EXPECT_EQ(255, pixels[0]);
    EXPECT_EQ(0, pixels[39]);
    EXPECT_EQ(0, pixels[2360]) << "start of the last row";

    ASSERT_EQ(30U, report["ascii"].size()) << "a character is twice as high as wide";
    const std::string first = report["ascii"][0];
    EXPECT_EQ(40U, first.size());
    EXPECT_EQ('@', first[0]);
    EXPECT_EQ(' ', first[39]);
    EXPECT_EQ(std::string(40, ' '), report["ascii"][29]);
    Terminal low(tavroctl({"cover", "first.txt", "--size", "40x60", "--ascii"}), {10, 40, 0, 0});
    low.expect("pixels\r\n");
    EXPECT_EQ(8 + 1, std::count(low.shown.begin(), low.shown.end(), '\n')) << "all of it is seen";
    EXPECT_EQ(0, low.wait());

    EXPECT_EQ(1, run({"cover", "first.txt", "--output", folder / "no/cover.png"}).status);
    writeFile(coverOf("first.txt", ".jpeg"), "\xFF\xD8 no picture");
    EXPECT_THAT(failed(words)["error"], HasSubstr("there is no readable cover"));
}

// What is no regular file, /dev/null say, must not become one.
TEST_F(BrowserCommands, CoverGoesIntoWhatTheOutputIs) {
    downloadBooks();
    writeCover(coverOf("first.txt", ".png"));
    const auto writeTo = [this](const std::string& path) {
        return run({"cover", "first.txt", "--output", path});
    };
    const std::string plain = folder / std::string(250, 'c');
    EXPECT_EQ(0, writeTo(plain).status) << "the longest names fit, too";
    const std::string picture = readFile(plain);
    ASSERT_NE("", picture);

    const std::string link = folder / "link";
    fs::create_symlink("target", link);
    for (int time = 0; time < 2; ++time)
        EXPECT_EQ(0, writeTo(link).status);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(picture, readFile(folder / "target"));
    EXPECT_THAT(writeTo("/dev/stdout").out,
                AllOf(testing::StartsWith(picture), HasSubstr("pixels in /dev/stdout")));

    const std::string fifo = folder / "fifo";
    ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0600));
    const pid_t reader = ::start({"/bin/cat", fifo}, {{1, folder / "read"}});
    EXPECT_EQ(0, writeTo(fifo).status);
    EXPECT_TRUE(fs::is_fifo(fifo));
    if (!fs::is_fifo(fifo))
        ::kill(reader, SIGTERM);
    statusOf(reader);
    EXPECT_EQ(picture, readFile(folder / "read"));
    EXPECT_THAT(writeTo("/dev/full").err, HasSubstr("/dev/full: No space left on device"));
}

TEST_F(BrowserCommands, BackgroundSyncReturnsWhileTheApplicationRuns) {
    EXPECT_THAT(failed({"sync", "--background"})["advice"], HasSubstr("tavroctl setup"));
    installApplication("tavro_sync.app", "while [ ! -e '" + folder / "go" +
                                             "' ]; do sleep 0.05; done\n" + "echo $# > '" +
                                             folder / "arguments" + "'\n");
    const json report = done({"sync", "--background"});
    EXPECT_EQ(true, report["started"]);
    EXPECT_EQ(root.configuration() + "/.tavro_sync.log", report["log"]);
    EXPECT_FALSE(fs::exists(folder / "arguments"));
    writeFile(folder / "go", "");
    for (int attempt = 0; attempt < 200 && readFile(folder / "arguments").empty(); ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ("0\n", readFile(folder / "arguments"));
}

TEST_F(BrowserCommands, DevicesLieSideBySide) {
    downloadBooks();
    const std::string other = folder / "devices/other";
    const auto onOther = [&](Words words) {
        words.insert(words.end(), {"--device", fs::relative(other)});
        return done(words, password + "\n");
    };
    onOther({"setup", "--service", service.url(), "--email", "bob@reader.example"});
    EXPECT_EQ(fs::perms::owner_all, fs::status(other).permissions());
    onOther({"register"});
    onOther({"signup", "--password-stdin"});
    onOther({"login", "--password-stdin"});
    const std::string log = onOther({"sync", "--background"})["log"];
    for (int attempt = 0; attempt < 500 && readFile(log).find("ends") == std::string::npos;
         ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ("The first book.\n", readFile(other + "/mnt/ext1/Tavro/first.txt"));
    EXPECT_EQ("first", onOther({"info", "first.txt"})["title"]);

    EXPECT_EQ(2, onOther({"logout", "--yes"})["removed"]);
    EXPECT_EQ(false, onOther({"status"})["configured"]);
    const json own = done({"status"});
    EXPECT_EQ("ada@reader.example", own["email"]);
    EXPECT_EQ(2, own["downloaded"]);
    EXPECT_EQ(true, own["loggedIn"]);
}

TEST_F(BrowserCommands, WaitedForRoundEndsWithItsStatusWhichStatusShows) {
    downloadBooks();
    installApplication("tavro_sync.app", "exec " TAVRO_TEST_SYNC_APPLICATION);
    const Words round{"sync", "--background", "--wait"};
    EXPECT_EQ("", done({"status"})["lastRound"]);
    done(round);
    EXPECT_EQ("done", done({"status"})["lastRound"]);
    service.inject("SysnWithCloud:code=2006,times=1");
    const json refused = failed(round);
    EXPECT_THAT(refused["error"], HasSubstr("the service answered 2006"));
    EXPECT_THAT(refused["advice"], HasSubstr("tavroctl register --renew"));
    EXPECT_EQ("2006", refused["code"]);
    EXPECT_THAT(done({"status"})["lastRoundProblems"][0], HasSubstr("2006"));
    EXPECT_THAT(run({"status"}).out, HasSubstr("Last round           failed"));

    service.inject("SysnWithCloud:delay=60000");
    done({"sync", "--background"});
    const auto becomes = [this](const char* outcome) {
        for (int tries = 0; tries < 100; ++tries)
            if (done({"status"})["lastRound"] == outcome)
                return true;
        return false;
    };
    ASSERT_TRUE(becomes("running"));
    EXPECT_EQ("tavroctl status", done({"status"})["next"]);
    EXPECT_THAT(failed(round)["error"], HasSubstr("another synchronisation"));
    service.clearFaults();  // which ends the delay
    EXPECT_TRUE(becomes("done"));
    std::filesystem::remove(root.file(".tavro_sync_round"));
    const posix::FileDescriptor lock(::open(root.file(".tavro_sync_lock").c_str(), O_RDWR));
    ASSERT_EQ(0, ::flock(lock.get(), LOCK_EX));
    EXPECT_THAT(failed(round)["error"], HasSubstr("another synchronisation")) << "and no round";
    ::flock(lock.get(), LOCK_UN);
    std::filesystem::create_directories(root.file(".tavro_sync_round/folder"));
    EXPECT_THAT(failed(round)["error"], HasSubstr("the round failed"));
    std::filesystem::remove_all(root.file(".tavro_sync_round"));
    for (const char* content : {"{", "{\"outcome\": 1}"}) {
        writeFile(root.file(".tavro_sync_round"), content);
        EXPECT_EQ("unknown", done({"status"})["lastRound"]);
    }
}

// The library has the shell run "rm FOLDER/*": with a blank in FOLDER, that is another folder, here
// one of the test's own.
TEST_F(BrowserCommands, LogOutRefusesAFolderThatTheShellWouldReadOtherwise) {
    writeFile(folder / "My/precious.txt", "Mine.\n");
    const auto expectRefusal = [this](const std::string& name) {
        writeFile(root.file(account_files::configuration), accountConfiguration(name));
        EXPECT_THAT(failed({"logout", "--yes"})["advice"], HasSubstr("plain name")) << name;
    };
    const std::string blank = "books " + folder / "My";
    for (const std::string& name : {blank, std::string("$HOME"), std::string("a;b"),
                                    std::string("B\xC3\xBC"
                                                "cher")}) {
        EXPECT_EQ(2, run({"setup", "--folder", folder / name}).status) << name;
        expectRefusal(folder / name);
    }
    expectRefusal("books");
    EXPECT_EQ("Mine.\n", readFile(folder / "My/precious.txt"));
    EXPECT_EQ(0, run({"setup", "--folder", folder / "books_1-a"}).status);
}

// Log-out removes all files directly in the download folder.
TEST_F(BrowserCommands, SetupTakesNoFolderWhoseFilesAreNotBooks) {
    done({"setup"});
    const std::string home = folder / "home";
    writeFile(home + "/.hidden", "");
    writeFile(home + "/sub/7.txt", "");
    ::setenv("HOME", home.c_str(), 1);
    fs::create_symlink(home, folder / "link");
    fs::create_symlink(root.configuration(), folder / "account");
    for (const std::string& harmful :
         {std::string("/"), home, folder / "link", std::string(::getpwuid(::getuid())->pw_dir),
          root.configuration(), folder / "account", deviceFile("mnt/ext1/system"),
          deviceFile("mnt/ext1/")}) {
        const Outcome refused = run({"setup", "--force", "--folder", harmful});
        EXPECT_EQ(2, refused.status) << harmful;
        EXPECT_THAT(refused.err, HasSubstr("is no folder for books")) << harmful;
    }
    writeFile(root.file(account_files::configuration), accountConfiguration(home));
    EXPECT_THAT(failed({"logout", "--yes"})["error"], HasSubstr("a home folder"));
    ::setenv("HOME", "/nowhere", 1);
    EXPECT_EQ(0, run({"setup", "--folder", folder / "new"}).status);
    writeFile(home + "/7.file", "7\n");
    EXPECT_EQ(0, run({"setup", "--folder", home}).status) << "nothing that log-out would remove";

    const std::string other = folder / "other";
    writeFile(other + "/letter.txt", "Mine.\n");
    EXPECT_EQ(2, run({"setup", "--folder", other}).status);
    Terminal refused(tavroctl({"setup", "--folder", other}));
    refused.expect("(1, one is letter.txt)");
    refused.type("n\n");
    EXPECT_EQ(1, refused.wait());
    EXPECT_EQ(home, done({"status"})["downloadFolder"]) << "nothing was changed";
    EXPECT_EQ(0, run({"setup", "--folder", other, "--force"}).status);
    EXPECT_EQ(0, run({"setup", "--folder", other}).status) << "it is the folder already";
}
