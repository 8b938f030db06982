// The platform's calls as their stand-ins keep to them, except the pictures.
#include <gmock/gmock.h>
#include <sys/resource.h>
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

namespace fs = std::filesystem;
using folium::utilities::SerializationUtils;
using folium::utilities::SerializeStringVec;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using namespace std::string_literals;

namespace {

class Platform : public testing::Test {
protected:
    /// What `ReadString` or `ReadSecret` makes of `key` in a file with the content `content`.
    std::string text(const std::string& content, const char* key,
                     decltype(&ReadString) read = ReadString) const {
        writeFile(path, content);
        LecternConfig* const config = OpenConfig(path.c_str(), nullptr);
        std::string result = read(config, key, "?");
        CloseConfigNoSave(config);
        return result;
    }

    /// The content of the file after `change` and a save.
    std::string saved(const std::function<void(LecternConfig*)>& change) const {
        LecternConfig* const config = OpenConfig(path.c_str(), nullptr);
        change(config);
        EXPECT_EQ(CloseConfig(config), 0);
        return readFile(path);
    }

    std::string savedSecret(const char* secret) const {
        return saved([=](auto* config) { WriteSecret(config, "password", secret); });
    }

    std::string hashOf(const std::string& content) const {
        writeFile(path, content);
        std::string hash(256, '-');
        const int count = FastBookHash(path.c_str(), hash.data(), 256);
        return hash.substr(0, count > 0 ? static_cast<std::size_t>(count) : 0);
    }

    const TemporaryFolder temporary;
    const std::string path = temporary / "settings.conf";
    const std::string folder = fs::path(path).parent_path();
};

}  // namespace

TEST_F(Platform, SettingsReadAsTheyStand) {
    const std::string content =
        "# first=no\nplain line\n=nothing\nempty=\n  spaced \t = a  b \t\r\nurl=h/?a=b#c\n"
        "mark=@text:xy\ntwice=1\ntwice=2";
    std::vector<std::string> values;
    for (const char* key :
         {"first", "# first", "", "plain line", "empty", "spaced", "url", "mark", "twice"})
        values.push_back(text(content, key));
    EXPECT_THAT(values, ElementsAre("?", "?", "?", "?", "", "a  b", "h/?a=b#c", "@text:xy", "2"));

    writeFile(path, "a= -2147483648 \nb=2147483648\nc=8x\nd=");
    saved([](auto* config) {
        EXPECT_EQ(ReadInt(config, "a", 16), -2147483648);
        for (const char* malformed : {"b", "c", "d", "absent"})
            EXPECT_EQ(ReadInt(config, malformed, 16), 16) << malformed;
    });
    EXPECT_EQ(GetCustomizedPartner(), 16);
    ::setenv("TAVRO_PARTNER", "80", 1);
    EXPECT_EQ(GetCustomizedPartner(), 80);
}

TEST_F(Platform, LinesThatAreNotChangedStayByteForByte) {
    const std::string target = folder + "/target";
    writeFile(target, "\r\n# note \r\n\tkeep =  x \r\nodd\r\n a =\told \r\ndrop=1\r\n last=z");
    fs::permissions(target, fs::perms{0644});
    fs::create_symlink(target, path);
    saved([](auto* config) {
        const char* const old = ReadString(config, "a", "");
        WriteString(config, "a", "new");
        EXPECT_STREQ(ReadString(config, "a", ""), "new");
        EXPECT_STREQ(old, "old") << "callers keep the pointers while they go on";
        RemoveKey(config, "drop");
        WriteString(config, "added", "1");
    });
    EXPECT_EQ(readFile(target),
              "\r\n# note \r\n\tkeep =  x \r\nodd\r\n a =\tnew \r\n last=z\r\nadded=1\r\n");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms{0644});
    EXPECT_TRUE(fs::is_symlink(path));
}

// A name typed by a person must never add a second setting.
TEST_F(Platform, AnyTextSurvivesAWriteAndNoneMakesAnotherKey) {
    for (const char* name : {"", "a\nsessionID=stolen", "\r", " blank ", "\ttab", "#x", "=",
                             "@text:41", "@text:", "@secret:41", "Zo\xc3\xab \xd0\x96"}) {
        fs::remove(path);
        const std::string content =
            saved([=](auto* config) { EXPECT_EQ(WriteString(config, "name", name), 0); });
        EXPECT_EQ(text(content, "name"), name);
        EXPECT_EQ(text(content, "sessionID"), "?");
    }
    saved([](auto* config) {
        for (const char* key : {"", "#a", " a", "a=b", "a\nb"})
            EXPECT_EQ(WriteString(config, key, "1"), -1) << key;
    });
}

TEST_F(Platform, OpeningTellsMissingFromUnreadable) {
    ASSERT_EQ(::mkfifo((folder + "/pipe").c_str(), 0600), 0);
    for (const std::string& other : {""s, folder, folder + "/none/file", folder + "/pipe"})
        EXPECT_EQ(OpenConfig(other.c_str(), nullptr), nullptr) << other;
    EXPECT_STREQ(ReadString(nullptr, "a", "fallback"), "fallback");
    WriteSecret(nullptr, "a", "b");
    EXPECT_EQ(CloseConfig(nullptr), -1);

    saved([](auto*) {});
    EXPECT_EQ(fs::status(path).permissions(), fs::perms{0600}) << "a missing file is created";
}

TEST_F(Platform, FailedSaveTellsWhyAndLeavesNothingBehind) {
    const auto failure = [this](const char* key, const std::function<void()>& obstruct) {
        LecternConfig* const config = OpenConfig(path.c_str(), nullptr);
        WriteSecret(config, key, "secret");
        obstruct();
        errno = 0;
        return CloseConfig(config) == -1 ? errno : 0;
    };
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full{0, before.rlim_max};  // as good as a full disk
    ::signal(SIGXFSZ, SIG_IGN);
    EXPECT_EQ(failure("a", [&] { ::setrlimit(RLIMIT_FSIZE, &full); }), EFBIG);
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(failure("no=key", [] {}), EINVAL) << "a lost secret must not pass for stored";
    EXPECT_EQ(failure("a", [this] { fs::create_directory(path); }), EISDIR);
    fs::remove(path);
    EXPECT_TRUE(fs::is_empty(folder));
    EXPECT_EQ(failure("a", [this] { fs::remove_all(folder); }), ENOENT);
    EXPECT_FALSE(fs::exists(folder));
}

TEST_F(Platform, SaveThatIsKilledLeavesTheOldContentOrTheNew) {
    const auto fill = [](char letter) { return "a=" + std::string(100'000, letter) + "\n"; };
    writeFile(path, fill('b'));
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
        EXPECT_THAT(readFile(path), testing::AnyOf(fill('a'), fill('b')));
    }
}

TEST_F(Platform, SecretsComeBackUnlessDamagedAndCannotBeReadInTheFile) {
    for (const char* secret : {"", "line\nbreak ", "\xff\x01\xc3\xab", "@secret:"})
        EXPECT_EQ(text(savedSecret(secret), "password", ReadSecret), secret);
    const std::string intact = savedSecret("correct horse");
    for (const char* readable : {"correct", "horse", "636f7272656374", "Y29ycmVjdC"})
        EXPECT_EQ(intact.find(readable), std::string::npos);
    EXPECT_EQ(text(intact, "password"), "?");
    EXPECT_NE(savedSecret("correct horse"), intact) << "equal secrets must not show as equal";
    for (std::size_t i = "password="s.size(); i + 1 < intact.size(); ++i) {
        std::string damaged = intact;
        damaged[i] = damaged[i] == '0' ? '1' : '0';
        EXPECT_EQ(text(damaged, "password", ReadSecret), "?") << i;
        EXPECT_EQ(text(intact.substr(0, i), "password", ReadSecret), "?") << i;
    }
}

TEST_F(Platform, HashTellsEveryDifferenceInContentAndKeepsToTheBuffer) {
    const std::string content(200'000, 'a');
    std::set<std::string> hashes = {hashOf(content), hashOf(content), hashOf("a"), hashOf("a\0"s),
                                    hashOf("")};
    for (const std::size_t place : {0U, 65'535U, 65'536U, 199'999U})
        hashes.insert(hashOf(std::string(content).replace(place, 1, "b")));
    EXPECT_EQ(hashes.size(), 8U);
    EXPECT_EQ(hashes.count(""), 0U);

    char buffer[] = "----";
    const std::string whole = hashOf("book");
    EXPECT_EQ(FastBookHash(path.c_str(), buffer, 3), 3);
    EXPECT_EQ(buffer, whole.substr(0, 3) + "-");
    for (const std::string& other : {folder, folder + "/none"})
        EXPECT_LE(FastBookHash(other.c_str(), buffer, 3), 0);
}

TEST_F(Platform, EventsAndLogLinesTellAll) {
    const DeviceRoot device;
    const std::string time = "[0-9]{4}(-[0-9]{2}){2} ([0-9]{2}:){2}[0-9]{2}[.][0-9]{3}";
    const std::string process = std::to_string(::getpid());
    for (int sent = 0; sent < 2; ++sent)
        EXPECT_EQ(SendEventTo(-3, 215, 0, 7), 0);
    EXPECT_THAT(readFile(deviceRoot() + "/mnt/ext1/system/events.log"),
                MatchesRegex("(" + time + " target=-3 type=215 parameters=0,7 process=" + process +
                             "\n){2}"));

    ::setenv("TAVRO_LOG", path.c_str(), 1);
    fl_print_log2(1, "src/a.cpp", 7, "int f()", "%s\n%d\r\n", std::string(300, 'x').c_str(), 42);
    fl_print_log2(2, "src/a.cpp", 8, "int f()", "above the level");
    ::setenv("TAVRO_LOG_LEVEL", "4", 1);
    fl_print_log2(4, "src/a.cpp", 9, "int f()", "trace");
    const std::string place = " process " + process + " src/a.cpp:";
    EXPECT_THAT(readFile(path),
                MatchesRegex(time + " level 1" + place + "7 int f\\(\\): x{300}\\\\n42\\\\x0d\n" +
                             time + " level 4" + place + "9 int f\\(\\): trace\n"));

    ::setenv("TAVRO_LOG", folder.c_str(), 1);
    testing::internal::CaptureStderr();
    errno = EDOM;
    fl_print_log2(1, "a", 1, "f", "no file");
    EXPECT_EQ(errno, EDOM) << "callers report errno after logging";
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("no file\n"));
}

// The browser opens applications and must neither wait for them nor collect zombies.
TEST_F(Platform, ApplicationRunsOnItsOwnWithItsParameters) {
    const std::string pipe = folder + "/pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    writeProgram(path,
                 "cd '" + folder + "' && read go < pipe && echo \"$#:$1\" > new && mv new done\n");
    siginfo_t child{};
    constexpr int states = WEXITED | WNOHANG | WNOWAIT;
    for (const auto& [parameters, expected] :
         {std::pair("-a 'b", "1:-a 'b\n"), {"", "1:\n"}, {nullptr, "0:\n"}}) {
        ASSERT_EQ(OpenBook(path.c_str(), parameters, 0), 0);
        EXPECT_FALSE(fs::exists(folder + "/done"));
        writeFile(pipe, "go\n");
        for (int i = 0; i < 10'000 && ::waitid(P_ALL, 0, &child, states) == 0; ++i)
            ::usleep(1000);
        EXPECT_EQ(errno, ECHILD);
        EXPECT_EQ(readFile(folder + "/done"), expected);
        fs::remove(folder + "/done");
    }
}

TEST_F(Platform, ApplicationThatCannotStartIsReported) {  // emulation cannot tell
    EXPECT_EQ(OpenBook("/none", "", 0), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(Platform, ForkedChildKnowsItsOwnProcess) {
    EXPECT_EQ(g_process_pid, ::getpid());
    EXPECT_EXIT(::_exit(g_process_pid == ::getpid() ? 0 : 1), testing::ExitedWithCode(0), "");
}

// Counts and lengths come from a file that anyone may have written.
TEST_F(Platform, SerializedStringsComeBackAndHostileOnesAreRefused) {
    std::stringstream stream;
    EXPECT_TRUE(SerializeStringVec(stream, {"ab", ""}));
    const std::string whole = "\x02\0\0\0\x02\0\0\0ab\0\0\0\0"s;
    EXPECT_EQ(stream.str(), whole);
    stream << "rest";
    std::vector<std::string> read{"old"};
    EXPECT_TRUE(SerializationUtils::DeserializeStringVec(stream, read));
    EXPECT_THAT(read, ElementsAre("ab", ""));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "rest");

    std::vector<std::string> inputs = {"\xff\xff\xff\xff\x01\0\0\0a"s,
                                       "\x01\0\0\0\xff\xff\xff\xffshort"s};
    for (std::size_t size = 0; size < whole.size(); ++size)
        inputs.push_back(whole.substr(0, size));
    for (const std::string& input : inputs) {
        std::istringstream hostile(input);
        read = {"old"};
        EXPECT_FALSE(SerializationUtils::DeserializeStringVec(hostile, read)) << input.size();
        EXPECT_TRUE(read.empty());
    }
}
