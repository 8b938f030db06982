// The command-line tool as a process of its own, against a running service.
#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "support/tavroctl_fixture.h"
#include "support/terminal.h"
#include "tavro.h"

using nlohmann::json;
using tavro::service::Operation;
using testing::HasSubstr;
using testing::Not;

// The library writes traces and answers to the standard streams; none of it may reach a script.
TEST_F(Tavroctl, WholeRoadPrintsNothingButJson) {
    EXPECT_EQ(false, done({"status"})["configured"]);
    setUpAccount();
    EXPECT_EQ(false, done({"register"})["changed"]);
    const Outcome traced = run({"--json", "--trace", "login", "--password-stdin"}, password);
    EXPECT_EQ(true, json::parse(traced.out)["loggedIn"]);
    EXPECT_THAT(traced.err, HasSubstr("POST /IOSCloudManagement.svc/LoginUser"));
    EXPECT_NE("", readFile(root.file(account_files::login_marker)));
    EXPECT_NE("", done({"shop"})["url"]);
    EXPECT_EQ("ada@reader.example", done({"remind"})["reminded"]);
    EXPECT_EQ(2, done({"sync"})["books"]);

    const json books = done({"books"});
    ASSERT_EQ(2U, books.size());
    EXPECT_EQ(json::array(), books[0]["files"]);
    const std::string item = books[0]["item"];
    EXPECT_EQ("downloaded", done({"download", item, item})[0]["result"]);
    const json all = done({"download", "--all"});
    EXPECT_THAT(all.dump(), AllOf(HasSubstr("\"present\""), HasSubstr("\"downloaded\"")));
    EXPECT_EQ("The first book.\n", book("first.txt"));
    EXPECT_EQ("The second book.\n", book("second.txt"));
    EXPECT_EQ(2U, done({"map"}).size());
    EXPECT_EQ(2, done({"status"})["downloaded"]);

    // A file that is gone counts as not downloaded, whatever the book map says.
    std::filesystem::remove(root.syncFolder() + "/first.txt");
    done({"download", "--all"});
    EXPECT_EQ("The first book.\n", book("first.txt"));
}

TEST_F(Tavroctl, ReplacedBookWaitsInTheJournalUntilReplayed) {
    downloadBooks();
    writeFile(folder / "second-2.txt", "The second book, corrected.\n");
    EXPECT_EQ(false, done({"replace", "second.txt", folder / "second-2.txt"})["uploaded"]);
    EXPECT_EQ(1U, done({"journal"}).size());
    EXPECT_EQ(1U, done({"journal"}).size()) << "showing the journal must not consume it";
    EXPECT_EQ(0U, service.count(Operation::UploadContent));

    const json replayed = done({"replay"});
    EXPECT_EQ("second-2.txt", replayed["uploaded"][0]["new"]);
    EXPECT_EQ(true, replayed["uploaded"][0]["uploaded"]);
    EXPECT_EQ(0U, done({"journal"}).size());
    const json map = done({"map"});
    EXPECT_EQ("second-2.txt", map[1]["file"]);
    const json again = done({"download", map[1]["item"]});
    EXPECT_EQ("The second book, corrected.\n", book(again[0]["detail"]));
}

// While the library retries, the changes lie in memory only: an impatient Ctrl-C must not lose
// them.
TEST_F(Tavroctl, InterruptedReplayKeepsTheChanges) {
    downloadBooks();
    writeFile(root.syncFolder() + "/first-2.txt", "The first book, corrected.\n");
    done({"replace", "first.txt", "first-2.txt"});
    service.inject("UploadContent:code=2009");
    const auto begin = std::chrono::steady_clock::now();
    const pid_t replay = start({"replay"}, {});
    while (service.count(Operation::UploadContent) == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ::kill(replay, SIGINT);
    EXPECT_EQ(-SIGINT, statusOf(replay));
    EXPECT_THAT(readFile(folder / "err"), HasSubstr("interrupted: 1 change stays pending"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
    const json journal = done({"journal"});
    ASSERT_EQ(1U, journal.size());
    EXPECT_EQ("first.txt", journal[0]["old"]);

    Terminal watched(tavroctl({"replay"}));
    watched.expect("uploading first-2.txt to 127.0.0.1:");
    watched.expect("attempt 1 to upload first-2.txt failed: the service answered 2009");
    watched.expect("next step in 5 s");
    watched.expect("attempt 2 to upload");
    watched.type("\x03");
    EXPECT_EQ(-SIGINT, watched.wait());
}

TEST_F(Tavroctl, ReplaceOverwritesNoOtherBook) {
    downloadBooks();
    writeFile(root.syncFolder() + "/notes.txt", "My own notes.\n");
    writeFile(folder / "notes.txt", "An unrelated file.\n");
    EXPECT_THAT(failed({"replace", "first.txt", folder / "notes.txt"})["error"],
                HasSubstr("is there already"));
    EXPECT_EQ("My own notes.\n", book("notes.txt"));
    EXPECT_THAT(failed({"replace", "first.txt", "second.txt"})["error"],
                HasSubstr("second.txt is the file of another book"));
    writeFile(folder / "third.txt", "Nobody asked for it.\n");
    EXPECT_THAT(failed({"replace", "unknown.txt", folder / "third.txt"})["error"],
                HasSubstr("does not know unknown.txt"));
    EXPECT_EQ("", book("third.txt"));
    EXPECT_THAT(failed({"replace", "first.txt", folder / "missing.txt"})["error"],
                HasSubstr("there is no file"));
    EXPECT_EQ(0U, done({"journal"}).size());
}

TEST_F(Tavroctl, RefusalsNameTheServiceAndItsCode) {
    done({"setup", "--service", "http://127.0.0.1:1"});
    EXPECT_THAT(failed({"register"})["error"],
                HasSubstr("no answer from 127.0.0.1:1: is the service running?"));
    setUpAccount();
    const json login = failed({"login", "--password-stdin"}, "wrong & wrong\n");
    EXPECT_THAT(login["advice"], HasSubstr("without & and <"));
    EXPECT_NE("", login["code"]);
    EXPECT_THAT(failed({"sync"})["error"], HasSubstr("nobody is logged in"));

    done({"login", "--password-stdin"}, password + "\n");
    service.inject("SysnWithCloud:delay=60000,times=1");
    Terminal patient(tavroctl({"sync"}));
    patient.expect("waiting for " + service.url() + " ...");
    service.clearFaults();  // which ends the delay
    patient.expect("\x1B[K2 books");
    EXPECT_EQ(0, patient.wait());

    // The library calls this sync a success: it only looks whether an answer came.
    for (const auto& [code, advice] :
         {std::pair("2006", "run 'tavroctl register --renew'"), {"2009", "run 'tavroctl login'"}}) {
        service.inject(std::string("SysnWithCloud:times=1,code=") + code);
        const json sync = failed({"sync"});
        EXPECT_EQ(code, sync["code"]);
        EXPECT_THAT(sync["advice"], testing::StartsWith(advice));
    }
}

TEST_F(Tavroctl, OneFailedDownloadDoesNotStopTheOthers) {
    downloadBooks();
    for (const char* name : {"first.txt", "second.txt"})
        std::filesystem::remove(root.syncFolder() + "/" + name);
    service.inject("DownloadContent:close,times=1");
    const Outcome outcome = run({"download", "--all", "--json"});
    EXPECT_EQ(1, outcome.status);
    const json report = json::parse(outcome.out);
    EXPECT_EQ("failed", report[0]["result"]);
    EXPECT_EQ("downloaded", report[1]["result"]);
    EXPECT_THAT(failed({"download", "999"})["advice"], HasSubstr("tavroctl books"));
    const std::string item = report[0]["item"];
    for (const char* name : {"../out.txt", "../missing/out.txt"}) {
        service.inject(std::string("DownloadContent:times=1,filename=") + name);
        EXPECT_THAT(run({"download", item, "--json"}).out, HasSubstr("leads out of")) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(root.syncFolder() + "/../out.txt"));
    service.inject("DownloadContent:times=1,cut=3,filename=../out.txt");
    EXPECT_THAT(run({"download", item, "--json"}).out, HasSubstr("leads out of"));
    EXPECT_FALSE(std::filesystem::exists(root.syncFolder() + "/../out.txt.downloading"));
    EXPECT_THAT(run({"map"}).out, Not(HasSubstr("out.txt")));

    const std::string other = report[1]["item"];
    service.stop();
    const Outcome down = run({"download", item, other});
    EXPECT_EQ(1, down.status);
    EXPECT_THAT(down.out, testing::EndsWith("0 downloaded, 0 present, 1 failed\n"));
    EXPECT_THAT(down.err, HasSubstr("with 1 book not tried: no answer from 127.0.0.1:"));
    EXPECT_THAT(run({"download", "--all"}).out,
                testing::EndsWith("0 downloaded, 1 present, 1 failed\n"));
}

// The card is not in: a folder in its place would have all books downloaded again.
TEST_F(Tavroctl, MissingDownloadFolderIsNotMadeForBooksThatWereInIt) {
    downloadBooks();
    std::filesystem::remove_all(root.syncFolder());
    writeFile(folder / "new.txt", "The first book, corrected.\n");
    for (const Words& words :
         {Words{"download", "--all"}, {"replace", "first.txt", folder / "new.txt"}})
        EXPECT_EQ("the download folder " + root.syncFolder() + " is missing",
                  failed(words)["error"]);
    const Outcome setup = run({"setup"});
    EXPECT_EQ(0, setup.status);
    EXPECT_THAT(setup.err, AllOf(HasSubstr("2 books of the book map are missing with"),
                                 HasSubstr("insert the card")));
    EXPECT_FALSE(std::filesystem::exists(root.syncFolder()));
    EXPECT_THAT(run({"setup", "--folder", folder / "new"}).err,
                HasSubstr("2 books of the book map are missing in the new folder"));
    EXPECT_TRUE(std::filesystem::exists(folder / "new"));
}

TEST_F(Tavroctl, ChangeWithoutItsFileIsSetAsideUntilItIsDropped) {
    downloadBooks();
    writeFile(root.syncFolder() + "/new.txt", "The first book, corrected.\n");
    done({"replace", "first.txt", "new.txt"});
    EXPECT_EQ(false, done({"journal"})[0]["missing"]);
    std::filesystem::remove(root.syncFolder() + "/new.txt");
    EXPECT_EQ(true, done({"journal"})[0]["missing"]);
    EXPECT_THAT(run({"journal"}).out, HasSubstr("set aside: the new file is not there"));
    EXPECT_EQ(1, done({"status"})["pending"]);
    EXPECT_EQ("tavroctl journal", done({"status"})["next"]);

    const Outcome replay = run({"replay", "--json"});
    EXPECT_EQ(1, replay.status);
    EXPECT_EQ("first.txt", json::parse(replay.out)["waiting"][0]["old"]);
    EXPECT_THAT(replay.err, HasSubstr("'tavroctl drop OLD'"));
    EXPECT_THAT(failed({"drop", "second.txt"})["advice"], HasSubstr("tavroctl journal"));
    const json dropped = done({"drop", "first.txt"});
    EXPECT_EQ("new.txt", dropped[0]["new"]);
    EXPECT_EQ(true, dropped[0]["missing"]);
    EXPECT_EQ(0U, done({"journal"}).size());
    EXPECT_EQ(0U, service.count(Operation::UploadContent));
}

// Root's files after sudo, a failing card: nothing is called empty, or written, that is not.
TEST_F(Tavroctl, UnreadableStoresFailWithTheirReason) {
    downloadBooks();
    done({"replace", "first.txt", "first.txt"});
    const std::vector<std::pair<const char*, std::vector<Words>>> cases{
        {account_files::journal, {{"journal"}, {"replay"}, {"status"}, {"drop", "first.txt"}}},
        {account_files::token, {{"sync"}, {"status"}, {"register"}}},
        {".tavro_sync_lock", {{"sync"}, {"replay"}, {"download", "--all"}}},
        {account_files::book_map,
         {{"map"}, {"books"}, {"status"}, {"replay"}, {"logout", "--yes"}}},
        {account_files::configuration, {{"status"}, {"setup"}, {"logout", "--yes"}}}};
    for (const auto& [name, commands] : cases) {
        const std::string file = root.file(name);
        std::filesystem::rename(file, folder / "aside");
        std::filesystem::create_symlink(file, file);
        for (const Words& words : commands)
            EXPECT_THAT(failed(words)["error"],
                        HasSubstr(file + ": Too many levels of symbolic links"))
                << words[0];
        std::filesystem::rename(folder / "aside", file);
    }
    std::filesystem::remove(root.file(Tavro::tavro_books));
    std::filesystem::create_symlink("loop", root.file("loop"));
    std::filesystem::create_symlink("loop", root.file(Tavro::tavro_books));
    EXPECT_THAT(failed({"sync"})["error"], HasSubstr("Too many levels of symbolic links"));
}

TEST_F(Tavroctl, OddFilesStopNoCommand) {
    downloadBooks();
    const std::string longest(305, 'n');
    addToMap(root.configuration(), {{"loop", 7}, {longest, 8}});
    std::filesystem::create_symlink("loop", root.syncFolder() + "/loop");
    for (const Words& words : {Words{"map"}, {"status"}, {"books"}, {"download", "--all"}})
        done(words);
    for (const std::string& name : {std::string("loop"), longest}) {
        EXPECT_THAT(failed({"status", name})["error"], HasSubstr("there is no file"));
        EXPECT_THAT(failed({"info", name})["error"], HasSubstr("the catalogue has no item"));
        EXPECT_THAT(failed({"replace", "first.txt", name})["error"], HasSubstr("another book"));
        EXPECT_THAT(failed({"replace", "first.txt", folder / name})["error"],
                    HasSubstr("another book"));
    }
    EXPECT_THAT(failed({"replace", "loop", folder / longest + "x"})["error"],
                HasSubstr("there is no file"));
    EXPECT_EQ(3, done({"logout", "--yes"})["removed"]);
}

// The next file opened would become the standard stream, and the trace its content.
TEST_F(Tavroctl, ClosedStreamsLeaveTheAccountsFilesClean) {
    downloadBooks();
    const auto statusWith = [](const std::string& redirections) {
        return statusOf(
            ::start({"/bin/sh", "-c", TAVRO_TEST_TAVROCTL " --trace sync " + redirections}));
    };
    EXPECT_EQ(0, statusWith(">/dev/null 2>&-"));
    EXPECT_EQ(0, statusWith("<&- >/dev/null 2>&-"));
    EXPECT_EQ(1, statusWith("<&- >&- 2>&-")) << "nobody can have the result";
    EXPECT_EQ("", readFile(root.file(".tavro_sync_lock")));
}

// A title out of the network must not steer the terminal, nor flood it.
TEST_F(Tavroctl, TitlesNeitherSteerNorFloodTheTerminal) {
    downloadBooks();
    std::string wide;  // characters of two columns
    for (int count = 0; count < 40; ++count)
        wide += "\xE6\x9B\xB8";
    const std::string item =
        "<ItemsResponse><ISBN13>978</ISBN13><ItemID>7</ItemID><Title>a\xC2\x9B"
        "2Jb" +
        wide + "</Title></ItemsResponse>";
    service.answer(Operation::SysnWithCloud,
                   answerXml("1003", "<AddedItems>" + item + item + "</AddedItems>"));
    done({"sync"});
    EXPECT_THAT(run({"books"}).out, HasSubstr("2Jb" + wide + "  "));
    EXPECT_EQ("978", done({"books"})[0]["isbn"]);
    EXPECT_THAT(run({"download", "--all"}).out, HasSubstr(" 1 failed")) << "an item given twice";
    Terminal books(tavroctl({"books"}), {24, 40, 0, 0});
    books.expect("2Jb" + wide.substr(0, 12) +
                 "\xE2\x80\xA6  ");  // 14 columns: 4 characters of 3 bytes
    EXPECT_EQ(0, books.wait());
    service.inject("DownloadContent:delay=300,times=1");
    Terminal download(tavroctl({"download", "7"}), {24, 40, 0, 0});
    download.expect(
        "\x1B[K1 of 1  a\xEF\xBF\xBD"
        "2Jb" +
        wide.substr(0, 15) + "\xE2\x80\xA6  0 kB  0 kB/s\r");
    EXPECT_EQ(1, download.wait());
    EXPECT_THAT(run({"books"}).out, AllOf(HasSubstr("a\xEF\xBF\xBD"
                                                    "2Jb"),
                                          Not(HasSubstr("\xC2\x9B"))));
}

TEST_F(Tavroctl, SetupKeepsWhatItIsNotTold) {
    setUpAccount();
    done({"login", "--password-stdin"}, password + "\n");
    const json before = done({"status"});
    const json serial = done({"setup"})["serialNumber"];
    EXPECT_EQ(before, done({"status"}));
    const json after = done({"setup", "--email", "bob@reader.example"});
    EXPECT_EQ(serial, after["serialNumber"]);
    EXPECT_EQ(false, done({"status"})["loggedIn"]) << "the session was another account's";
}

TEST_F(Tavroctl, WrongUseEndsWithStatusTwoAndChangesNothing) {
    setUpAccount();
    const std::pair<Words, const char*> cases[] = {
        {{}, ""},
        {{"fly"}, "there is no command 'fly'"},
        {{"help", "fly"}, "there is no command 'fly'"},
        {{"sync", "--fast"}, "--fast"},
        {{"sync", "--wait"}, "--background"},
        {{"replace", "only-one.txt"}, ""},
        {{"download"}, ""},
        {{"download", "1", "--all"}, "--all"},
        {{"setup", "--email", "a&b@reader.example"}, "&"},
        {{"setup", "--email", "bad address"}, "without blanks"},
        {{"setup", "--service", ""}, "'' is no service address"},
        {{"setup", "--service", "https://127.0.0.1"}, ""},
        {{"setup", "--service", "http://127.0.0.1:65536"}, ""},
        {{"setup", "--service", "http://127.0.0.1:"}, ""},
        {{"setup", "--service", "http://127.0.0.1:80/shop"}, ""},
        {{"setup", "--service", "http://[::1"}, ""},
        {{"setup", "--service", "http://:80"}, ""},
        {{"setup", "--service", "http://" + std::string(120'000, 'a')}, ""},
        {{"login"}, "--password-stdin"},
        {{"login", "--password-stdin"}, ""},
        {{"logout"}, "--yes"},
        {{"info"}, "FILE is required"},
        {{"status", ""}, "FILE"},
        {{"cover", "first.txt"}, "--output"},
        {{"cover", "first.txt", "--output", "x.JPG"}, "is written as a PNG"},
        {{"cover", "first.txt", "--ascii", "--size", "0x10"}, "'0x10' is no size"},
        {{"cover", "first.txt", "--ascii", "--size", "8193x10"}, "'8193x10' is no size"},
        {{"cover", "first.txt", "--ascii", "--size", std::string(120'000, '1')}, "is no size"},
        {{"status", "--device", ""}, "from --device"},
        {{"--device", folder / "a b", "setup"}, "a b', from --device"},
        {{"logout", "--yes", "--device", "/tmp/.."}, "'/', from --device"}};
    for (auto [words, error] : cases) {
        EXPECT_THAT(run(words).err, testing::StartsWith("tavroctl: "));
        words.push_back("--json");
        const Outcome outcome = run(words);
        EXPECT_EQ(2, outcome.status) << testing::PrintToString(words);
        EXPECT_THAT(json::parse(outcome.err)["error"], HasSubstr(error));
    }
    EXPECT_TRUE(done({"status"})["registered"]);
    EXPECT_FALSE(std::filesystem::exists(folder / "a b"));
    ::setenv(device_root::variable, "a", 1);
    EXPECT_THAT(failed({"setup"}, {}, 2)["error"], HasSubstr("'a', from TAVRO_DEVICE_ROOT"));
    for (const char* program : {TAVRO_TEST_SYNC_APPLICATION, TAVRO_TEST_WIZARD})
        EXPECT_EQ(2, statusOf(::start({program}, {{2, folder / "err"}}))) << program;
    ::setenv(device_root::variable, deviceRoot().c_str(), 1);
    for (const std::string address : {"http://[::1]:8080", "http://reader.example:80"})
        EXPECT_EQ(address, done({"setup", "--service", address + "/"})["service"]);
    for (const Words& words : {Words{"--help"}, {"help"}})
        EXPECT_THAT(run(words).out, HasSubstr("Subcommands:")) << words[0];
    EXPECT_EQ(run({"sync", "--help"}).out, run({"--json", "help", "sync"}).out);
    EXPECT_THAT(run({}).err, HasSubstr("Subcommands:"));
    EXPECT_EQ(0, run({"--version"}).status);
}

TEST_F(Tavroctl, PasswordPromptHidesItAndGivesTheEchoBack) {
    setUpAccount();
    Terminal login(tavroctl({"login"}));
    login.expect("Password: ");
    EXPECT_FALSE(login.echoes());
    login.type(password + "\n");
    login.expect("Logged in");
    EXPECT_EQ(0, login.wait());
    EXPECT_THAT(login.shown, Not(HasSubstr(password)));

    Terminal interrupted(tavroctl({"login"}));
    interrupted.expect("Password: ");
    interrupted.type("\x03");
    EXPECT_EQ(-SIGINT, interrupted.wait());
    EXPECT_TRUE(interrupted.echoes());
}

TEST_F(Tavroctl, WizardHasTheTerminalAndIsWaitedFor) {
    EXPECT_THAT(failed({"wizard"})["advice"], HasSubstr("tavroctl setup"));
    installApplication("tavro_wizard.app", "printf 'Token? '; read token; echo \"$token\" > " +
                                               root.configuration() + "/.tavro_vendor_token\n");
    Terminal terminal(tavroctl({"wizard"}));
    terminal.expect("Token? ");
    terminal.type("abc\n");
    terminal.expect("Logged in");
    EXPECT_EQ(0, terminal.wait());
    const Outcome scripted = run({"wizard", "--json"}, "def\n");
    EXPECT_EQ(true, json::parse(scripted.out)["loggedIn"]) << "the wizard's text is no result";
    EXPECT_EQ("Token? ", scripted.err);

    std::filesystem::remove(root.file(account_files::login_marker));
    installApplication("tavro_wizard.app", "printf 'Waiting'; read token\n");
    Terminal interrupted(tavroctl({"wizard"}));
    interrupted.expect("Waiting");
    interrupted.type("\x03");
    interrupted.expect("nobody is logged in");
    EXPECT_EQ(1, interrupted.wait());
}

TEST_F(Tavroctl, LogOutAsksAndSparesSubfoldersAndHiddenFiles) {
    downloadBooks();
    for (const char* name : {"with blank.txt", ".hidden", "sub/kept.txt"})
        writeFile(root.syncFolder() + "/" + name, "Mine.\n");
    const std::string hidden = deviceFile("mnt/ext1/.adobe-hidden-files");
    writeFile(hidden + "/key", "");

    Terminal refused(tavroctl({"logout"}));
    refused.expect("3 files directly in the download folder " + root.syncFolder());
    refused.expect("Log out? [y/N] ");
    refused.type("\n");
    refused.expect("nothing was changed");
    EXPECT_EQ(1, refused.wait());
    EXPECT_EQ("The first book.\n", book("first.txt"));
    EXPECT_EQ(true, done({"status"})["loggedIn"]);

    const json report = done({"logout", "--yes"});
    EXPECT_EQ(3, report["removed"]);
    EXPECT_EQ(json({".hidden", "sub"}), report["left"]);
    EXPECT_EQ("Mine.\n", book("sub/kept.txt"));
    EXPECT_FALSE(std::filesystem::exists(root.configuration()));
    EXPECT_FALSE(std::filesystem::exists(hidden));
    EXPECT_EQ(false, done({"status"})["configured"]);
}
