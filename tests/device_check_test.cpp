// The program that checks a device, on the stand-ins as they are and with contracts broken on
// purpose.
#include <core_utils.h>
#include <gmock/gmock.h>
#include <lectern.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "device-check/check.h"
#include "support/next_function.h"
#include "support/tavroctl_fixture.h"

using namespace tavro::device_check;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Pair;

namespace {

std::string broken;  ///< the call that does not keep its contract

}  // namespace

// Stand before the platform's, for the checks and the library.

extern "C" int FastBookHash(const char* path, char* buffer, int size) {
    const int length = next<decltype(FastBookHash)>("FastBookHash")(path, buffer, size);
    if (broken == "FastBookHash")
        std::fill_n(buffer, std::max(length, 0), 'h');
    return length;
}

extern "C" LecternBitmap* LoadBitmap(const char* path) {
    if (broken == "LoadBitmap")
        std::abort();
    return next<decltype(LoadBitmap)>("LoadBitmap")(path);
}

extern "C" int GetCustomizedPartner() {
    if (broken == "GetCustomizedPartner")
        ::pause();
    return 0;
}

extern "C" void WriteSecret(LecternConfig* config, const char* key, const char* value) {
    next<decltype(WriteSecret)>("WriteSecret")(config, key, broken == "WriteSecret" ? "" : value);
}

extern "C" void InitLectern(int) {
    if (broken == "InitLectern")
        std::_Exit(3);
}

namespace {

/// What the checks of the platform that fail have found, by their names.
std::map<std::string, std::string> failures(const TemporaryFolder& folder) {
    std::map<std::string, std::string> found;
    Context context{folder / "", ""};
    for (Check check : platformChecks()) {
        check.seconds = 5;
        const Result result = runInChild(check, context);
        if (result.status != 'o')
            found[check.name] = result.found;
    }
    return found;
}

class DeviceCheck : public Tavroctl {
protected:
    /// What the program finds, by the names of its checks.
    std::map<std::string, std::string> check(Words words, int status,
                                             const std::string& input = {}) const {
        words.insert(words.begin(), {TAVRO_TEST_DEVICE_CHECK, "--json"});
        writeFile(folder / "in", input);
        EXPECT_EQ(statusOf(::start(words, {{0, folder / "in"}, {1, folder / "out"}})), status);
        std::map<std::string, std::string> results;
        if (status == 2)
            return results;
        const auto report = nlohmann::json::parse(readFile(folder / "out"));
        for (const auto& result : report["checks"])
            results[result["check"]] = result["status"];
        return results;
    }

    /// All that the device has stored.
    std::map<std::string, std::string> stored() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(deviceRoot()))
            files[entry.path()] = entry.is_directory() ? "" : readFile(entry.path());
        return files;
    }
};

}  // namespace

TEST(BrokenContract, IsFoundByName) {
    const TemporaryFolder folder;
    EXPECT_THAT(failures(folder), IsEmpty());
    const std::pair<std::string, std::pair<std::string, std::string>> cases[] = {
        {"FastBookHash", {"FastBookHash", "two contents, one byte apart, have one hash"}},
        {"WriteSecret", {"ReadSecret, WriteSecret", "a secret reads back as another text"}},
        {"LoadBitmap", {"LoadBitmap", "it crashed: Aborted"}},
        {"GetCustomizedPartner", {"GetCustomizedPartner", "it did not end within 5 seconds"}},
        {"InitLectern",
         {"InitLectern",
          "it ended the program with status 3; start again with --verbose to see what it "
          "printed"}}};
    for (const auto& [call, failure] : cases) {
        broken = call;
        EXPECT_THAT(failures(folder), ElementsAre(Pair(failure.first, failure.second)));
    }
}

TEST_F(DeviceCheck, TellsWhatADeviceLacks) {
    EXPECT_THAT(
        check({"--event", "--open", "/none"}, 1),
        IsSupersetOf({Pair("libtavro.so", "ok"), Pair("layout", "ok"), Pair("OpenBook", "ok"),
                      Pair("sync folder", "skipped"), Pair("login wizard", "wrong")}));
    EXPECT_THAT(readFile(deviceFile("mnt/ext1/system/events.log")), HasSubstr("type=215"));
    writeFile(folder / "liblectern.so", "no library");
    ::setenv("LD_LIBRARY_PATH", (folder / "").c_str(), 1);
    EXPECT_THAT(check({}, 1),
                IsSupersetOf({Pair("liblectern.so", "wrong"), Pair("libcurl", "ok"),
                              Pair("libtavro.so", "skipped"), Pair("FastBookHash", "skipped")}));
    for (const Words& words : {Words{"--nothing"}, {"--open"}, {"--password-stdin"}})
        check(words, 2);
}

// A log-in and a download, and not a byte of the device is another afterwards.
TEST_F(DeviceCheck, AsksTheServiceAndChangesNothing) {
    for (const char* name : {"tavro_sync.app", "tavro_wizard.app"})
        installApplication(name, "");
    setUpAccount();
    const auto before = stored();
    EXPECT_THAT(check({"--service", "--password-stdin"}, 0, password + "\n"),
                IsSupersetOf({Pair("registration", "skipped"), Pair("log-in", "ok"),
                              Pair("catalogue", "ok"), Pair("download", "ok")}));
    EXPECT_EQ(stored(), before);
    std::filesystem::remove(root.file(account_files::token));
    service.inject("LoginUser:code=2008");
    EXPECT_THAT(check({"--service"}, 1),
                IsSupersetOf({Pair("registration", "ok"), Pair("log-in", "wrong"),
                              Pair("download", "skipped")}));
    EXPECT_FALSE(std::filesystem::exists(root.file(account_files::token)));
}
