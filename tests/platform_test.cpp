#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
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
using testing::IsEmpty;
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

    /// Stores `secret` under the key "password" and returns the saved file's content.
    std::string savedSecret(const std::string& secret) const {
        LecternConfig* const config = open();
        WriteSecret(config, "password", secret.c_str());
        EXPECT_EQ(CloseConfig(config), 0);
        return readFile(path_);
    }

    std::string revealedFrom(const std::string& content) const {
        return reading(content, [](LecternConfig* config) {
            return std::string(ReadSecret(config, "password", "fallback"));
        });
    }

    /// The texts of `keys` in a file with the content `content`; "?" for one that has none.
    std::vector<std::string> texts(const std::string& content,
                                   const std::vector<std::string>& keys) const {
        return reading(content, [&keys](LecternConfig* config) {
            std::vector<std::string> result;
            result.reserve(keys.size());
            for (const std::string& key : keys)
                result.emplace_back(ReadString(config, key.c_str(), "?"));
            return result;
        });
    }

    std::string hashOf(const std::string& content) const {
        writeFile(path_, content);
        char hash[256];
        const int count = FastBookHash(path_.c_str(), hash, sizeof hash);
        return count > 0 ? std::string(hash, static_cast<std::size_t>(count)) : "";
    }

    /// Names of what lies in the test's folder.
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& entry : fs::directory_iterator(folder_))
            result.push_back(entry.path().filename());
        return result;
    }

    const TemporaryFolder temporary_;
    const std::string path_ = temporary_ / "settings.conf";
    const std::string folder_ = fs::path(path_).parent_path();
};

mode_t permissionsOf(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

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
    EXPECT_THAT(texts(content, {"first", "# first", "", "plain line", "empty", "spaced", "url",
                                "path", "quoted", "mark", "twice"}),
                ElementsAre("?", "?", "?", "?", "", "a  b", "http://h/?a=b#c", "C:\\new\\table",
                            "\"x\"", "@text:xy", "2"));
}

TEST_F(Platform, NumbersThatAreNotWhollyDecimalGiveTheFallback) {
    const std::pair<const char*, int> cases[] = {
        {"80", 80}, {" -2147483648 ", -2147483648}, {"2147483648", 5}, {"8x", 5}, {"", 5}};
    for (const auto& [text, number] : cases) {
        const auto read = [](LecternConfig* config) { return ReadInt(config, "n", 5); };
        EXPECT_EQ(reading("n="s + text, read), number) << text;
    }
}

TEST_F(Platform, LinesThatAreNotChangedStayByteForByte) {
    const std::string before =
        "\r\n# note \r\n\tkeep =  x \r\nodd\r\n a =\told \r\ndrop=1\r\n last=z";
    writeFile(path_, before);
    LecternConfig* config = open();
    EXPECT_EQ(WriteString(config, "a", "new"), 0);
    EXPECT_EQ(RemoveKey(config, "drop"), 0);
    EXPECT_EQ(RemoveKey(config, "absent"), 0);
    EXPECT_EQ(WriteString(config, "added", "1"), 0);
    EXPECT_EQ(CloseConfig(config), 0);
    const std::string after =
        "\r\n# note \r\n\tkeep =  x \r\nodd\r\n a =\tnew \r\n last=z\r\nadded=1\r\n";
    EXPECT_EQ(readFile(path_), after);

    config = open();
    EXPECT_EQ(WriteString(config, "a", "dropped"), 0);
    CloseConfigNoSave(config);
    EXPECT_EQ(readFile(path_), after);

    config = open();
    EXPECT_EQ(RemoveKey(config, "added"), 0);
    EXPECT_EQ(CloseConfig(config), 0);
    EXPECT_EQ(readFile(path_), after.substr(0, after.size() - "added=1\r\n"s.size()));
}

// A name typed by a person must never add a second setting.
TEST_F(Platform, AnyTextSurvivesAWriteAndNoneMakesAnotherKey) {
    for (const char* text :
         {"", "a\nsessionID=stolen", "\r", " blank ", "\ttab", "end\t", "a\\nb", "#x", "=",
          "@text:41", "@text:", "@secret:41", "Zo\xc3\xab \xd0\x96"}) {
        fs::remove(path_);
        LecternConfig* config = open();
        EXPECT_EQ(WriteString(config, "name", text), 0);
        EXPECT_EQ(CloseConfig(config), 0);
        EXPECT_THAT(texts(readFile(path_), {"name", "sessionID"}), ElementsAre(text, "?"));
    }
    LecternConfig* const config = open();
    for (const char* key : {"", "#a", " a", "a ", "a=b", "a\nb", "a\r"})
        EXPECT_EQ(WriteString(config, key, "1"), -1) << key;
    CloseConfigNoSave(config);
}

// Callers keep the pointers while they read and write on.
TEST_F(Platform, ReadTextsLiveAsLongAsTheHandle) {
    writeFile(path_, "a=first value, longer than any short string\nb=2");
    LecternConfig* const config = open();
    const char* const first = ReadString(config, "a", "");
    WriteString(config, "a", "another value, longer than any short string");
    for (int i = 0; i < 1000; ++i)
        WriteString(config, ("k" + std::to_string(i)).c_str(), ReadString(config, "b", ""));
    EXPECT_STREQ(first, "first value, longer than any short string");
    EXPECT_STREQ(ReadString(config, "a", ""), "another value, longer than any short string");
    CloseConfigNoSave(config);
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
    EXPECT_EQ(permissionsOf(path_), 0600U);
}

TEST_F(Platform, SavingKeepsPermissionsAndFollowsLinks) {
    writeFile(path_, "a=1\n");
    fs::permissions(path_, fs::perms{0644});
    const std::string link = folder_ + "/link";
    fs::create_symlink(path_, link);
    LecternConfig* const config = OpenConfig(link.c_str(), nullptr);
    WriteString(config, "a", "2");
    EXPECT_EQ(CloseConfig(config), 0);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(readFile(path_), "a=2\n");
    EXPECT_EQ(permissionsOf(path_), 0644U);
    EXPECT_THAT(names(), testing::UnorderedElementsAre("settings.conf", "link"));
}

TEST_F(Platform, FailedSaveIsReportedAndLeavesNothingBehind) {
    LecternConfig* config = open();
    WriteString(config, "a", "1");
    fs::create_directory(path_);
    EXPECT_EQ(CloseConfig(config), -1);
    EXPECT_THAT(names(), ElementsAre("settings.conf"));

    fs::remove(path_);
    writeFile(path_, "a=1\n");
    config = open();
    WriteSecret(config, "no=key", "lost");
    EXPECT_EQ(CloseConfig(config), -1) << "a secret that was not stored must not pass for stored";
    EXPECT_EQ(readFile(path_), "a=1\n");

    config = open();
    WriteString(config, "a", "2");
    fs::remove_all(folder_);
    EXPECT_EQ(CloseConfig(config), -1);
    EXPECT_FALSE(fs::exists(folder_));
}

TEST_F(Platform, SecretsComeBackAndCannotBeReadInTheFile) {
    for (const std::string secret :
         {"", "correct horse", "line\nbreak ", "\xff\x01\xc3\xab", "@secret:"}) {
        fs::remove(path_);
        const std::string first = savedSecret(secret);
        EXPECT_EQ(revealedFrom(first), secret);
        EXPECT_NE(savedSecret(secret), first) << "equal secrets must not show as equal";
        EXPECT_THAT(texts(first, {"password"}), ElementsAre("?"));
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
        EXPECT_EQ(revealedFrom(damaged), "fallback") << i;
        EXPECT_EQ(revealedFrom(intact.substr(0, i)), "fallback") << i;
    }
    EXPECT_EQ(revealedFrom("password=plain\n"), "fallback");
}

TEST_F(Platform, HashChangesWithEveryByteOfTheFile) {
    std::string content(200'000, 'a');
    const std::string hash = hashOf(content);
    EXPECT_EQ(hash.size(), 16U);
    EXPECT_EQ(hashOf(content), hash);
    for (const std::size_t place : {0UL, 1UL, 65'535UL, 65'536UL, 100'001UL, 199'999UL}) {
        content[place] = '\0';
        EXPECT_NE(hashOf(content), hash) << place;
        content[place] = 'a';
    }
    for (const std::size_t place : {7UL, 15UL, 23UL, 31UL})
        content[place] = static_cast<char>('a' + 0x80);
    EXPECT_NE(hashOf(content), hash) << "the highest bits of words must not cancel out";
    content.replace(0, 32, 32, 'a');
    EXPECT_NE(hashOf(content + "a"), hash);
    EXPECT_NE(hashOf("a"), hashOf("a\0"s)) << "the length counts";
    EXPECT_NE(hashOf("ab"), hashOf("ba"));
    EXPECT_NE(hashOf(""), "");
    EXPECT_NE(hashOf(""), hashOf("\0"s));
}

TEST_F(Platform, HashKeepsToTheBufferAndReportsUnreadableFiles) {
    const std::string whole = hashOf("book");
    char buffer[4] = {'-', '-', '-', '-'};
    EXPECT_EQ(FastBookHash(path_.c_str(), buffer, 3), 3);
    EXPECT_EQ(std::string(buffer, 4), whole.substr(0, 3) + "-");
    EXPECT_LE(FastBookHash(path_.c_str(), buffer, 0), 0);
    EXPECT_LE(FastBookHash(path_.c_str(), buffer, -1), 0);
    EXPECT_LE(FastBookHash(path_.c_str(), nullptr, 3), 0);
    EXPECT_LE(FastBookHash(nullptr, buffer, 3), 0);
    EXPECT_LE(FastBookHash(folder_.c_str(), buffer, 3), 0);
    EXPECT_LE(FastBookHash((folder_ + "/none").c_str(), buffer, 3), 0);
}

TEST_F(Platform, PartnerComesFromTheEnvironment) {
    EXPECT_EQ(GetCustomizedPartner(), 16);
    const std::pair<const char*, int> cases[] = {{"12", 12}, {"0", 0}, {"", 16}, {"12a", 16}};
    for (const auto& [text, partner] : cases) {
        ::setenv("TAVRO_PARTNER", text, 1);
        EXPECT_EQ(GetCustomizedPartner(), partner) << text;
    }
}

TEST_F(Platform, EventsAreNotedInTheLog) {
    const std::string line = "[-0-9]{10} [.:0-9]{12} target=-3 type=215 parameters=0,0 process=" +
                             std::to_string(::getpid()) + "\n";
    ::setenv("TAVRO_EVENT_LOG", path_.c_str(), 1);
    EXPECT_EQ(SendEventTo(-3, 215, 0, 0), 0);
    const std::string first = readFile(path_);
    EXPECT_THAT(first, MatchesRegex(line));
    EXPECT_EQ(SendEventTo(7, 1, -2, 3), 0);
    EXPECT_THAT(readFile(path_).substr(first.size()),
                HasSubstr(" target=7 type=1 parameters=-2,3 process="));
    ::setenv("TAVRO_EVENT_LOG", (folder_ + "/none/log").c_str(), 1);
    EXPECT_EQ(SendEventTo(-3, 215, 0, 0), -1);
    EXPECT_EQ(errno, ENOENT);

    ::unsetenv("TAVRO_EVENT_LOG");
    const DeviceRoot device;
    EXPECT_EQ(SendEventTo(-3, 215, 0, 0), 0);
    EXPECT_THAT(readFile(TAVRO_TEST_DEVICE_ROOT "/mnt/ext1/system/events.log"), MatchesRegex(line));
}

// The browser opens applications and must neither wait for them nor collect zombies.
TEST_F(Platform, ApplicationRunsOnItsOwnWithItsParameters) {
    const std::string pipe = folder_ + "/pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string application = folder_ + "/reader.app";
    writeFile(application, "#!/bin/sh\ncd '" + folder_ +
                               "' && read go < pipe && echo \"$#:$1\" > new && mv new done\n");
    fs::permissions(application, fs::perms{0700});

    const std::pair<const char*, const char*> cases[] = {
        {"-a 'b", "1:-a 'b\n"}, {"", "1:\n"}, {nullptr, "0:\n"}};
    for (const auto& [parameters, expected] : cases) {
        ASSERT_EQ(OpenBook(application.c_str(), parameters, 0), 0);
        EXPECT_FALSE(fs::exists(folder_ + "/done"));
        writeFile(pipe, "go\n");
        EXPECT_TRUE(allChildrenGo());
        EXPECT_EQ(readFile(folder_ + "/done"), expected);
        fs::remove(folder_ + "/done");
    }
    EXPECT_EQ(OpenBook(nullptr, "", 0), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(Platform, ApplicationThatCannotStartIsReported) {
    writeFile(path_, "#!/bin/sh\n");
    EXPECT_EQ(OpenBook(path_.c_str(), "", 0), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(OpenBook((folder_ + "/none").c_str(), "", 0), -1);
    EXPECT_EQ(errno, ENOENT);
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
    const auto log = [] { fl_print_log2(1, "a", 1, "f", "here"); };
    ::setenv("TAVRO_LOG", "stdout", 1);
    testing::internal::CaptureStdout();
    log();
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("here\n"));
    for (const std::string& target : {""s, "stderr"s, folder_}) {
        ::setenv("TAVRO_LOG", target.c_str(), 1);
        testing::internal::CaptureStderr();
        errno = EDOM;
        log();
        EXPECT_EQ(errno, EDOM) << "callers report errno after logging";
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("here\n")) << target;
    }
}

TEST_F(Platform, ForkedChildKnowsItsOwnProcess) {
    EXPECT_EQ(g_process_pid, ::getpid());
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(g_process_pid == ::getpid() ? 0 : 1);
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
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
    std::ostringstream exact;
    SerializeStringVec(exact, {"ab"});
    EXPECT_EQ(exact.str(), "\x01\0\0\0\x02\0\0\0ab"s);
}

// Counts and lengths come from a file that anyone may have written.
TEST_F(Platform, HostileSerializedStringsAreRefused) {
    std::ostringstream whole;
    SerializeStringVec(whole, {"first", "", "third"});
    std::vector<std::string> inputs = {"\xff\xff\xff\xff"s, "\xff\xff\xff\xff\x01\0\0\0a"s,
                                       "\x01\0\0\0\xff\xff\xff\xffshort"s};
    for (std::size_t size = 0; size < whole.str().size(); ++size)
        inputs.push_back(whole.str().substr(0, size));
    for (const std::string& input : inputs) {
        std::istringstream stream(input);
        std::vector<std::string> read{"old"};
        EXPECT_FALSE(SerializationUtils::DeserializeStringVec(stream, read)) << input.size();
        EXPECT_THAT(read, IsEmpty());
    }
}
