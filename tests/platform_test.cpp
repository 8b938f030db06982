#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <set>
#include <sstream>

#include "core_utils.h"
#include "core_utils_host.h"
#include "lectern_host.h"
#include "support/device_root.h"
#include "support/temporary_folder.h"

namespace fs = std::filesystem;
using folium::utilities::SerializationUtils;
using folium::utilities::SerializeStringVec;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using namespace std::string_literals;

namespace {

class Platform : public testing::Test {
protected:
    void TearDown() override {
        for (const char* name :
             {"TAVRO_PARTNER", "TAVRO_LOG", "TAVRO_LOG_LEVEL", "TAVRO_EVENT_LOG"})
            ::unsetenv(name);
    }

    LecternConfig* open() const { return OpenConfig(path_.c_str(), nullptr); }

    /// What `read` makes of a file with the content `content`.
    template <typename Read>
    auto reading(const std::string& content, Read read) const {
        writeFile(path_, content);
        LecternConfig* const config = open();
        auto result = read(config);
        CloseConfigNoSave(config);
        return result;
    }

    /// What `ReadString` or `ReadSecret` makes of `key` in a file with the content `content`.
    std::string text(const std::string& content, const char* key,
                     decltype(&ReadString) read = ReadString) const {
        return reading(content, [=](auto* config) { return std::string(read(config, key, "?")); });
    }

    /// The content of the file after `change`, and a save with the outcome `outcome`.
    std::string saved(const std::function<void(LecternConfig*)>& change, int outcome = 0) const {
        LecternConfig* const config = open();
        change(config);
        EXPECT_EQ(CloseConfig(config), outcome);
        return fs::is_regular_file(path_) ? readFile(path_) : "";
    }

    std::string savedSecret(const char* secret) const {
        return saved([=](auto* config) { WriteSecret(config, "password", secret); });
    }

    std::string hashOf(const std::string& content) const {
        writeFile(path_, content);
        char hash[256];
        const int count = FastBookHash(path_.c_str(), hash, sizeof hash);
        return count > 0 ? std::string(hash, static_cast<std::size_t>(count)) : "";
    }

    std::set<std::string> namesInFolder() const {
        std::set<std::string> result;
        for (const auto& entry : fs::directory_iterator(folder_))
            result.insert(entry.path().filename());
        return result;
    }

    const TemporaryFolder temporary_;
    const std::string path_ = temporary_ / "settings.conf";
    const std::string folder_ = fs::path(path_).parent_path();
};

/// Whether within ten seconds all children of this process end and are reaped by others.
bool allChildrenGo() {
    siginfo_t child{};
    for (int tries = 0; tries < 10'000; ++tries) {
        if (::waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == -1)
            return errno == ECHILD;
        ::usleep(1000);
    }
    return false;
}

}  // namespace

TEST_F(Platform, ValuesReadAsTheyStand) {
    const std::string content =
        "\n# first=no\n#second=no\nplain line\n=nothing\nempty=\n  spaced \t = a  b \t\r\n"
        "url=http://h/?a=b#c\npath=C:\\new\\table\nquoted=\"x\"\nmark=@text:xy\ntwice=1\ntwice=2";
    std::vector<std::string> values;
    for (const char* key : {"first", "# first", "", "plain line", "empty", "spaced", "url", "path",
                            "quoted", "mark", "twice"})
        values.push_back(text(content, key));
    EXPECT_THAT(values, ElementsAre("?", "?", "?", "?", "", "a  b", "http://h/?a=b#c",
                                    "C:\\new\\table", "\"x\"", "@text:xy", "2"));
}

TEST_F(Platform, NumbersThatAreNotWhollyDecimalGiveTheFallback) {
    EXPECT_EQ(GetCustomizedPartner(), 16);
    const std::pair<const char*, int> cases[] = {
        {"80", 80}, {"-2147483648", -2147483648}, {"2147483648", 16}, {"8x", 16}, {"", 16}};
    for (const auto& [number, value] : cases) {
        const auto read = [](auto* config) { return ReadInt(config, "n", 16); };
        EXPECT_EQ(reading("n= "s + number + " ", read), value) << number;
        ::setenv("TAVRO_PARTNER", number, 1);
        EXPECT_EQ(GetCustomizedPartner(), value) << number;
    }
}

TEST_F(Platform, LinesThatAreNotChangedStayByteForByte) {
    writeFile(path_, "\r\n# note \r\n\tkeep =  x \r\nodd\r\n a =\told \r\ndrop=1\r\n last=z");
    const std::string after = saved([](auto* config) {
        EXPECT_EQ(WriteString(config, "a", "new"), 0);
        EXPECT_EQ(RemoveKey(config, "drop"), 0);
        EXPECT_EQ(RemoveKey(config, "absent"), 0);
        EXPECT_EQ(WriteString(config, "added", "1"), 0);
    });
    const std::string lines = "\r\n# note \r\n\tkeep =  x \r\nodd\r\n a =\tnew \r\n last=z\r\n";
    EXPECT_EQ(after, lines + "added=1\r\n");
    reading(after, [](auto* config) { return WriteString(config, "a", "dropped"); });
    EXPECT_EQ(readFile(path_), after);
    EXPECT_EQ(saved([](auto* config) { RemoveKey(config, "added"); }), lines);
}

// A name typed by a person must never add a second setting.
TEST_F(Platform, AnyTextSurvivesAWriteAndNoneMakesAnotherKey) {
    for (const char* name :
         {"", "a\nsessionID=stolen", "\r", " blank ", "\ttab", "end\t", "a\\nb", "#x", "=",
          "@text:41", "@text:", "@secret:41", "Zo\xc3\xab \xd0\x96"}) {
        fs::remove(path_);
        const std::string content =
            saved([=](auto* config) { EXPECT_EQ(WriteString(config, "name", name), 0); });
        EXPECT_EQ(text(content, "name"), name);
        EXPECT_EQ(text(content, "sessionID"), "?");
    }
    saved([](auto* config) {
        for (const char* key : {"", "#a", " a", "a ", "a=b", "a\nb", "a\r"})
            EXPECT_EQ(WriteString(config, key, "1"), -1) << key;
    });
}

// Callers keep the pointers while they read and write on.
TEST_F(Platform, ReadTextsLiveAsLongAsTheHandle) {
    const std::string values[] = {std::string(40, 'a'), std::string(40, 'b')};
    writeFile(path_, "a=" + values[0] + "\nb=2");
    saved([&values](auto* config) {
        const char* const first = ReadString(config, "a", "");
        WriteString(config, "a", values[1].c_str());
        for (int i = 0; i < 1000; ++i)
            WriteString(config, ("k" + std::to_string(i)).c_str(), ReadString(config, "b", ""));
        EXPECT_EQ(first, values[0]);
        EXPECT_EQ(ReadString(config, "a", ""), values[1]);
    });
}

TEST_F(Platform, OpeningTellsMissingFromUnreadable) {
    ASSERT_EQ(::mkfifo((folder_ + "/pipe").c_str(), 0600), 0);
    for (const std::string& path :
         {""s, folder_, folder_ + "/none/file", folder_ + "/none/", folder_ + "/pipe"})
        EXPECT_EQ(OpenConfig(path.c_str(), nullptr), nullptr) << path;
    EXPECT_EQ(OpenConfig(nullptr, nullptr), nullptr);
    EXPECT_STREQ(ReadString(nullptr, "a", "fallback"), "fallback");
    EXPECT_STREQ(ReadSecret(nullptr, "a", "fallback"), "fallback");
    EXPECT_EQ(ReadInt(nullptr, "a", 3), 3);
    WriteSecret(nullptr, "a", "b");
    EXPECT_EQ(WriteString(nullptr, "a", "b"), -1);
    EXPECT_EQ(RemoveKey(nullptr, "a"), -1);
    EXPECT_EQ(CloseConfig(nullptr), -1);
    CloseConfigNoSave(nullptr);

    EXPECT_EQ(CloseConfig(open()), 0) << "a missing file is created";
    EXPECT_EQ(fs::status(path_).permissions(), fs::perms{0600});
}

TEST_F(Platform, SavingKeepsPermissionsAndFollowsLinks) {
    const std::string target = folder_ + "/target";
    writeFile(target, "a=1\n");
    fs::permissions(target, fs::perms{0644});
    fs::create_symlink(target, path_);
    saved([](auto* config) { WriteString(config, "a", "2"); });
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_EQ(readFile(target), "a=2\n");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms{0644});
    EXPECT_THAT(namesInFolder(), ElementsAre("settings.conf", "target"));
}

TEST_F(Platform, FailedSaveIsReportedAndLeavesNothingBehind) {
    const auto obstructed = [this](const std::function<void()>& obstruct, const char* key) {
        const auto change = [&](LecternConfig* config) {
            WriteSecret(config, key, "secret");
            obstruct();
        };
        return saved(change, -1);
    };
    obstructed([this] { fs::create_directory(path_); }, "a");
    EXPECT_THAT(namesInFolder(), ElementsAre("settings.conf"));
    fs::remove(path_);
    writeFile(path_, "a=1\n");
    EXPECT_EQ(obstructed([] {}, "no=key"), "a=1\n") << "a lost secret must not pass for stored";
    obstructed([this] { fs::remove_all(folder_); }, "a");
    EXPECT_FALSE(fs::exists(folder_));
}

TEST_F(Platform, SaveThatIsKilledLeavesTheOldContentOrTheNew) {
    const auto fill = [](char letter) { return "a=" + std::string(100'000, letter) + "\n"; };
    writeFile(path_, fill('b'));
    for (useconds_t delay = 0; delay < 10'000; delay += 250) {
        const pid_t child = ::fork();
        if (child == 0)
            ::alarm(5);
        for (int round = 0; child == 0 && round >= 0; ++round) {
            const std::string value = fill(round % 2 == 0 ? 'a' : 'b').substr(2, 100'000);
            saved([&value](auto* config) { WriteString(config, "a", value.c_str()); });
        }
        ::usleep(delay);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        EXPECT_THAT(readFile(path_), testing::AnyOf(fill('a'), fill('b')));
    }
}

TEST_F(Platform, SecretsComeBackAndCannotBeReadInTheFile) {
    for (const char* secret :
         {"", "correct horse", "line\nbreak ", "\xff\x01\xc3\xab", "@secret:"}) {
        fs::remove(path_);
        const std::string first = savedSecret(secret);
        EXPECT_EQ(text(first, "password", ReadSecret), secret);
        EXPECT_EQ(text(first, "password"), "?");
        EXPECT_NE(savedSecret(secret), first) << "equal secrets must not show as equal";
    }
    const std::string file = savedSecret("correct horse");
    for (const char* readable : {"correct", "horse", "636f7272656374", "Y29ycmVjdC"})
        EXPECT_THAT(file, Not(HasSubstr(readable)));
}

TEST_F(Platform, DamagedSecretGivesTheFallback) {
    const std::string intact = savedSecret("correct horse");
    for (std::size_t i = "password="s.size(); i + 1 < intact.size(); ++i) {
        std::string damaged = intact;
        damaged[i] = damaged[i] == '0' ? '1' : '0';
        EXPECT_EQ(text(damaged, "password", ReadSecret), "?") << i;
        EXPECT_EQ(text(intact.substr(0, i), "password", ReadSecret), "?") << i;
    }
    EXPECT_EQ(text("password=plain\n", "password", ReadSecret), "?");
}

TEST_F(Platform, HashTellsEveryDifferenceInContent) {
    const std::string content(200'000, 'a');
    std::vector<std::string> contents = {content, content + "a", "a", "a\0"s,
                                         "ab",    "ba",          "",  "\0"s};
    for (const std::size_t place : {0U, 1U, 65'535U, 65'536U, 100'001U, 199'999U})
        contents.push_back(std::string(content).replace(place, 1, "b"));
    std::set<std::string> hashes;
    for (const std::string& other : contents)
        hashes.insert(hashOf(other));
    EXPECT_EQ(hashes.size(), contents.size());
    EXPECT_EQ(hashes.count(hashOf(content)), 1U) << "equal contents have equal hashes";
}

TEST_F(Platform, HashKeepsToTheBufferAndReportsUnreadableFiles) {
    const std::string whole = hashOf("book");
    EXPECT_EQ(whole.size(), 16U);
    char buffer[] = "----";
    EXPECT_EQ(FastBookHash(path_.c_str(), buffer, 3), 3);
    EXPECT_EQ(buffer, whole.substr(0, 3) + "-");
    for (const int size : {0, -1})
        EXPECT_LE(FastBookHash(path_.c_str(), buffer, size), 0);
    EXPECT_LE(FastBookHash(path_.c_str(), nullptr, 3), 0);
    EXPECT_LE(FastBookHash(nullptr, buffer, 3), 0);
    EXPECT_LE(FastBookHash(folder_.c_str(), buffer, 3), 0);
    EXPECT_LE(FastBookHash((folder_ + "/none").c_str(), buffer, 3), 0);
}

TEST_F(Platform, EventsAreNotedInTheLog) {
    const std::string start = "[-0-9]{10} [.:0-9]{12} target=";
    const std::string end = " process=" + std::to_string(::getpid()) + "\n";
    const DeviceRoot device;
    EXPECT_EQ(SendEventTo(-3, 215, 0, 0), 0);
    EXPECT_EQ(SendEventTo(7, 1, -2, 3), 0);
    EXPECT_THAT(readFile(TAVRO_TEST_DEVICE_ROOT "/mnt/ext1/system/events.log"),
                MatchesRegex(start + "-3 type=215 parameters=0,0" + end + start +
                             "7 type=1 parameters=-2,3" + end));
    ::setenv("TAVRO_EVENT_LOG", path_.c_str(), 1);
    EXPECT_EQ(SendEventTo(-3, 215, 0, 0), 0);
    EXPECT_THAT(readFile(path_), HasSubstr(end));
    ::setenv("TAVRO_EVENT_LOG", (folder_ + "/none/log").c_str(), 1);
    EXPECT_EQ(SendEventTo(-3, 215, 0, 0), -1);
    EXPECT_EQ(errno, ENOENT);
}

// The browser opens applications and must neither wait for them nor collect zombies.
TEST_F(Platform, ApplicationRunsOnItsOwnWithItsParameters) {
    const std::string pipe = folder_ + "/pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    writeFile(path_, "#!/bin/sh\ncd '" + folder_ +
                         "' && read go < pipe && echo \"$#:$1\" > new && mv new done\n");
    fs::permissions(path_, fs::perms{0700});
    const std::pair<const char*, const char*> cases[] = {
        {"-a 'b", "1:-a 'b\n"}, {"", "1:\n"}, {nullptr, "0:\n"}};
    for (const auto& [parameters, expected] : cases) {
        ASSERT_EQ(OpenBook(path_.c_str(), parameters, 0), 0);
        EXPECT_FALSE(fs::exists(folder_ + "/done"));
        writeFile(pipe, "go\n");
        EXPECT_TRUE(allChildrenGo());
        EXPECT_EQ(readFile(folder_ + "/done"), expected);
        fs::remove(folder_ + "/done");
    }
}

TEST_F(Platform, ApplicationThatCannotStartIsReported) {
    writeFile(path_, "#!/bin/sh\n");
    const std::pair<const char*, int> cases[] = {
        {path_.c_str(), EACCES}, {"/none", ENOENT}, {nullptr, EINVAL}};
    for (const auto& [application, cause] : cases) {
        EXPECT_EQ(OpenBook(application, "", 0), -1);
        EXPECT_EQ(errno, cause);
    }
}

TEST_F(Platform, LogLineTellsTimeLevelProcessPlaceAndWholeMessage) {
    ::setenv("TAVRO_LOG", path_.c_str(), 1);
    const std::string message(100'000, 'x');
    fl_print_log2(1, "src/a.cpp", 7, "int f()", "%s\n%d\r\n", message.c_str(), 42);
    fl_print_log2(2, "src/a.cpp", 8, "int f()", "above the level");
    const std::string log = readFile(path_);
    EXPECT_THAT(log.substr(0, 23),
                MatchesRegex("[0-9]{4}(-[0-9]{2}){2} ([0-9]{2}:){2}[0-9]{2}[.][0-9]{3}"));
    EXPECT_EQ(log.substr(23), " level 1 process " + std::to_string(::getpid()) +
                                  " src/a.cpp:7 int f(): " + message + "\\n42\\x0d\n");
    ::setenv("TAVRO_LOG_LEVEL", "4", 1);
    fl_print_log2(4, "src/a.cpp", 9, "int f()", "trace");
    EXPECT_THAT(readFile(path_).substr(log.size()), HasSubstr(" level 4 "));
}

TEST_F(Platform, LogGoesToTheNamedStreamAndToStderrWhenTheFileFails) {
    for (const std::string& target : {"stdout"s, ""s, "stderr"s, folder_}) {
        ::setenv("TAVRO_LOG", target.c_str(), 1);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        errno = EDOM;
        fl_print_log2(1, "a", 1, "f", "here");
        EXPECT_EQ(errno, EDOM) << "callers report errno after logging";
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_THAT(target == "stdout" ? out : err, HasSubstr("here\n")) << target;
    }
}

TEST_F(Platform, ForkedChildKnowsItsOwnProcess) {
    EXPECT_EQ(g_process_pid, ::getpid());
    EXPECT_EXIT(::_exit(g_process_pid == ::getpid() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(Platform, SerializedStringsComeBackAndWhatFollowsIsLeft) {
    for (const std::vector<std::string>& strings :
         {std::vector<std::string>{}, {"", "a\0b"s, std::string(200'000, 'x')}}) {
        std::stringstream stream;
        EXPECT_TRUE(SerializeStringVec(stream, strings));
        stream << "rest";
        std::vector<std::string> read{"old"};
        EXPECT_TRUE(SerializationUtils::DeserializeStringVec(stream, read));
        EXPECT_EQ(read, strings);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "rest");
    }
}

// Counts and lengths come from a file that anyone may have written.
TEST_F(Platform, HostileSerializedStringsAreRefused) {
    std::ostringstream exact;
    SerializeStringVec(exact, {"ab", ""});
    const std::string whole = "\x02\0\0\0\x02\0\0\0ab\0\0\0\0"s;
    EXPECT_EQ(exact.str(), whole);
    std::vector<std::string> inputs = {"\xff\xff\xff\xff"s, "\xff\xff\xff\xff\x01\0\0\0a"s,
                                       "\x01\0\0\0\xff\xff\xff\xffshort"s};
    for (std::size_t size = 0; size < whole.size(); ++size)
        inputs.push_back(whole.substr(0, size));
    for (const std::string& input : inputs) {
        std::istringstream stream(input);
        std::vector<std::string> read{"old"};
        EXPECT_FALSE(SerializationUtils::DeserializeStringVec(stream, read)) << input.size();
        EXPECT_TRUE(read.empty());
    }
}
